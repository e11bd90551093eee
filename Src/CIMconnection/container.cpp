#include "zuCIM/container.h"

#include <utility>

#include "CIMconnection/registry.h"

namespace zuCIM {

namespace {

// Copies what a context has beyond its connection and its index. A listener is never shared; the
// target's own one ends.
void copy_own_members(CIMcontainer& target, const CIMcontainer& source) noexcept {
  target.classes = source.classes;
  target.methodName = source.methodName;
  target.currentClass = source.currentClass;
  target.callerValue = source.callerValue;
  target.mostDeletions = source.mostDeletions;
  target.listenerLimits = source.listenerLimits;
  delete std::exchange(target.listener, nullptr);
}

}  // namespace

CIMcontainer::CIMcontainer() noexcept
    : currentClass(nullptr),
      listener(nullptr),
      methodName(nullptr),
      index(no_index),
      callerValue(0),
      mostDeletions(subscription_limit::most_deletions) {}

CIMcontainer::CIMcontainer(const CIMcontainer& source) noexcept
    : CIMconnection(source), listener(nullptr), index(source.index) {
  copy_own_members(*this, source);
}

// The server keeps the instances of a subscription that still stands.
CIMcontainer::~CIMcontainer() {
  delete listener;
}

CIMcontainer& CIMcontainer::operator=(const CIMcontainer& source) noexcept {
  if (this == &source) return *this;
  CIMconnection::operator=(source);
  copy_own_members(*this, source);
  change_index(*this, source.index);
  return *this;
}

void CIMcontainer::free_all() noexcept {
  currentClass = nullptr;
  classes.clsClean();
  ESXi_Occupied(true);
  releaseCurlHandle();
  ESXi_Occupied(false);
  cimStatus = 0;
}

}  // namespace zuCIM
