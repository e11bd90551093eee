#include "indications.h"

#include "../names.h"
#include "parts.h"
#include "test_indication.h"

namespace simulator {

namespace {

constexpr const char* subscription_namespace = "root/interop";

// Whether a reference says no more than the class of what it refers to.
bool names_only_a_class(const InstanceDeclaration::NamedValue& given) {
  if (given.value.is_null()) return true;
  const ReferencePtr* reference = given.value.reference();
  return reference != nullptr && ((*reference)->is_class || (*reference)->target.keys.empty());
}

const Class* class_named_by(const Namespace& name_space, const Class& type,
                            const InstanceDeclaration::NamedValue& given) {
  if (const ReferencePtr* reference = given.value.reference()) {
    return name_space.find_class((*reference)->target.class_name);
  }
  if (!given.reference_class.empty()) return name_space.find_class(given.reference_class);
  const auto position = type.find_property(given.name);
  return position ? name_space.find_class(type.properties[*position].reference_class) : nullptr;
}

// A filter without a namespace asks for indications wherever they come from.
bool asks_for_namespace(const Instance& filter, std::string_view source) {
  const std::string* one = filter.value("SourceNamespace").text();
  const TextArray* several = filter.value("SourceNamespaces").array();
  if (one == nullptr && several == nullptr) return true;
  if (one != nullptr && same_name(*one, source)) return true;
  if (several == nullptr) return false;
  for (const auto& each : *several) {
    if (each && same_name(*each, source)) return true;
  }
  return false;
}

bool asks_for(const Instance& filter, const Namespace& source, const Class& type) {
  return asks_for_namespace(filter, source.name()) && is_a(source, type, class_asked_by(filter));
}

}  // namespace

void Indications::complete(const Namespace& name_space, const Class& type, const Peer& maker,
                           InstanceDeclaration& declared) const {
  const SubscriptionPart part = part_of(name_space, type);
  if (part == SubscriptionPart::none) return;
  if (part != SubscriptionPart::subscription) return add_key_defaults(type, declared);
  for (auto& each : declared.values) {
    if (each.shape != Shape::reference || !names_only_a_class(each)) continue;
    const Class* named = class_named_by(name_space, type, each);
    const Instance* newest = named == nullptr ? nullptr : makers_.newest(*named, maker);
    if (newest == nullptr) continue;
    each.value.content = reference_to(*newest);
  }
}

void Indications::note_creation(const Namespace& name_space, const Instance& instance,
                                const Peer& maker) {
  const SubscriptionPart part = part_of(name_space, *instance.type);
  if (part == SubscriptionPart::filter || part == SubscriptionPart::handler) {
    makers_.note(instance, maker);
  }
}

void Indications::note_removal(const Instance& instance) {
  makers_.forget(instance);
  const auto found = streams_.find(&instance);
  if (found == streams_.end()) return;
  found->second.ticket->ended = true;
  streams_.erase(found);
  courier_.look_at_tickets();
}

std::optional<std::size_t> Indications::send_test(const std::string& class_name,
                                                  std::uint32_t count) {
  const Namespace* source = repository_.find(source_namespace);
  const Class* type = source == nullptr ? nullptr : find_indication_class(*source, class_name);
  if (type == nullptr) return std::nullopt;
  const std::vector<Recipient> recipients = recipients_of(*source, *type);
  for (std::uint32_t i = 0; i < count; ++i) {
    ++last_indication_;
    for (const Recipient& each : recipients) send_to(each, *type);
  }
  return recipients.size();
}

// The subscriptions whose filters ask for a class.
std::vector<Indications::Recipient> Indications::recipients_of(const Namespace& source,
                                                               const Class& type) const {
  std::vector<Recipient> result;
  const Namespace* interop = repository_.find(subscription_namespace);
  if (interop == nullptr) return result;
  for (const Instance* each : all_instances(*interop, subscription_class)) {
    const Instance* filter = referenced(*interop, *each, "Filter");
    const Instance* handler = referenced(*interop, *each, "Handler");
    if (filter == nullptr || handler == nullptr) continue;
    const std::string* destination = handler->value("Destination").text();
    if (destination == nullptr || !asks_for(*filter, source, type)) continue;
    const std::string* name = filter->value("Name").text();
    result.push_back({*each, *destination, name == nullptr ? std::string() : *name});
  }
  return result;
}

Indications::Stream& Indications::stream_of(const Instance& subscription) {
  Stream& stream = streams_[&subscription];
  if (!stream.ticket) {
    stream.ticket = std::make_shared<Ticket>();
    stream.context = "zucim-simulator:" + std::to_string(++last_stream_);
  }
  return stream;
}

void Indications::send_to(const Recipient& recipient, const Class& type) {
  Stream& stream = stream_of(recipient.subscription);
  const IndicationFacts facts{last_indication_, stream.context, stream.next_number++,
                              recipient.filter_name};
  courier_.post(recipient.destination, {test_indication(type, facts), stream.ticket});
}

}  // namespace simulator
