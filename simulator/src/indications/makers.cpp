#include "makers.h"

namespace simulator {

void Makers::forget(const Instance& gone) {
  std::erase_if(made_, [&gone](const Made& each) { return each.instance == &gone; });
}

const Instance* Makers::newest(const Class& type, const Peer& maker) const {
  const Instance* from_same_address = nullptr;
  for (auto each = made_.rbegin(); each != made_.rend(); ++each) {
    if (each->maker.address != maker.address || !each->instance->type->is_a(type)) continue;
    if (each->maker.port == maker.port) return each->instance;
    if (from_same_address == nullptr) from_same_address = each->instance;
  }
  return from_same_address;
}

}  // namespace simulator
