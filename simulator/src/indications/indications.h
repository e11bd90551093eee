#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "../protocol.h"
#include "../repository.h"
#include "../xml_reader.h"
#include "courier.h"
#include "makers.h"

namespace simulator {

// The indications of this server: watches over the instances that subscriptions are made of, and
// sends what happens to whom it concerns.
//
// Thread rule: used under the lock of the repository.
class Indications {
 public:
  Indications(const Repository& repository, Courier& courier)
      : repository_(repository), courier_(courier) {}

  // Fills in what clients leave to the server: keys of filters and handlers, and what a
  // subscription refers to where it names no more than a class.
  void complete(const Namespace& name_space, const Class& type, const Peer& maker,
                InstanceDeclaration& declared) const;

  // An instance was created, or is gone.
  void note_creation(const Namespace& name_space, const Instance& instance, const Peer& maker);
  void note_removal(const Instance& instance);

  // Sends `count` indications of a class of `source_namespace`, each to every subscription whose
  // filter asks for it, and returns how many subscriptions those are; nothing if that is no class
  // of indications, or abstract.
  std::optional<std::size_t> send_test(const std::string& class_name, std::uint32_t count);

  // What became of the indications for a destination; for all together where it is empty.
  Tally tally(const std::string& destination) const { return courier_.tally(destination); }

  // The class of indications that are sent where no other is asked for.
  static constexpr const char* usual_class = "CIM_AlertIndication";

  // Where the indications come from.
  static constexpr const char* source_namespace = "root/cimv2";

 private:
  // A subscription that has been served.
  struct Stream {
    std::shared_ptr<Ticket> ticket;
    std::string context;
    std::int64_t next_number = 0;
  };

  // What is to be known of a subscription to send indications for it.
  struct Recipient {
    const Instance& subscription;
    std::string destination;
    std::string filter_name;
  };

  std::vector<Recipient> recipients_of(const Namespace& source, const Class& type) const;
  Stream& stream_of(const Instance& subscription);
  void send_to(const Recipient& recipient, const Class& type);

  const Repository& repository_;
  Courier& courier_;
  Makers makers_;
  std::unordered_map<const Instance*, Stream> streams_;
  std::uint64_t last_stream_ = 0;
  std::uint64_t last_indication_ = 0;
};

}  // namespace simulator
