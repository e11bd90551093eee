#include "indications.h"

#include <utility>

#include "../names.h"
#include "../query.h"
#include "parts.h"
#include "test_indication.h"

namespace simulator {

namespace {

constexpr const char* subscription_namespace = "root/interop";
constexpr const char* default_language = "WQL";

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

std::string text_or(const Value& value, const std::string& otherwise) {
  const std::string* text = value.text();
  return text == nullptr ? otherwise : *text;
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
  if (!asks_for_namespace(filter, source.name())) return false;
  const std::string language = text_or(filter.value("QueryLanguage"), default_language);
  const std::string query = text_or(filter.value("Query"), {});
  const Class* asked = source.find_class(read_filter_query(language, query));
  return asked != nullptr && type.is_a(*asked);
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
    each.value.content = std::make_shared<const Reference>(Reference{name_of(*newest), {}, {}});
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

std::optional<std::size_t> Indications::send_test(const std::string& class_name) {
  const Namespace* source = repository_.find(source_namespace);
  const Namespace* interop = repository_.find(subscription_namespace);
  const Class* type = source == nullptr ? nullptr : find_indication_class(*source, class_name);
  if (type == nullptr) return std::nullopt;
  ++last_indication_;
  std::size_t count = 0;
  if (interop == nullptr) return count;
  for (const Instance* each : all_instances(*interop, "CIM_IndicationSubscription")) {
    if (send_to(*each, *interop, *type)) ++count;
  }
  return count;
}

Indications::Stream& Indications::stream_of(const Instance& subscription) {
  Stream& stream = streams_[&subscription];
  if (!stream.ticket) {
    stream.ticket = std::make_shared<Ticket>();
    stream.context = "zucim-simulator:" + std::to_string(++last_stream_);
  }
  return stream;
}

// False if the subscription's filter asks for something else.
bool Indications::send_to(const Instance& subscription, const Namespace& name_space,
                          const Class& type) {
  const Instance* filter = referenced(name_space, subscription, "Filter");
  const Instance* handler = referenced(name_space, subscription, "Handler");
  if (filter == nullptr || handler == nullptr) return false;
  const Namespace& source = *repository_.find(source_namespace);
  const std::string* destination = handler->value("Destination").text();
  if (destination == nullptr || !asks_for(*filter, source, type)) return false;

  Stream& stream = stream_of(subscription);
  const IndicationFacts facts{last_indication_, stream.context, stream.next_number++,
                              text_or(filter->value("Name"), {})};
  courier_.post(*destination, {test_indication(type, facts), stream.ticket});
  return true;
}

}  // namespace simulator
