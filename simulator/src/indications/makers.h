#pragma once

#include <vector>

#include "../protocol.h"
#include "../repository.h"

namespace simulator {

// Remembers which client made a filter or handler. Not locked: it is used under the lock of the
// repository.
class Makers {
 public:
  void note(const Instance& made, const Peer& maker) { made_.push_back({&made, maker}); }
  void forget(const Instance& gone);

  // What a client made last of a class or its subclasses, or null. Clients that come from the same
  // address are told apart by their connection as long as they keep it.
  const Instance* newest(const Class& type, const Peer& maker) const;

 private:
  struct Made {
    const Instance* instance;
    Peer maker;
  };

  std::vector<Made> made_;  // the newest last
};

}  // namespace simulator
