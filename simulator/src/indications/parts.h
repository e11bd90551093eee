#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "../repository.h"
#include "../xml_reader.h"

// The three kinds of instances that make a subscription, and what they must hold. As real servers
// do, this one refuses what could never work when it is created, not when it is used.
namespace simulator {

// Of what class and its subclasses subscriptions are.
inline constexpr const char* subscription_class = "CIM_IndicationSubscription";

enum class SubscriptionPart { none, filter, handler, subscription };

// Which of them instances of a class are.
SubscriptionPart part_of(const Namespace& name_space, const Class& type);

// Gives filters and handlers the keys that clients may leave to the server.
void add_key_defaults(const Class& type, InstanceDeclaration& declared);

// Checks a part as it is to be: the query of a filter, the destination of a handler, what the
// references of a subscription name. Throws CimError.
void check_part(const Namespace& name_space, const Instance& instance);

// The name of the class of indications that a filter's query asks for. Throws CimError where the
// filter has no query or one that cannot be read.
std::string class_asked_by(const Instance& filter);

// Refuses (CimError) to remove a filter or handler that a subscription names.
void check_is_unused(const Namespace& name_space, const Instance& instance);

// The filter or handler that the reference of a subscription names, or null.
const Instance* referenced(const Namespace& name_space, const Instance& subscription,
                           std::string_view property);

// All instances of a class and its subclasses; none where the namespace has no such class.
std::vector<const Instance*> all_instances(const Namespace& name_space,
                                           std::string_view class_name);

}  // namespace simulator
