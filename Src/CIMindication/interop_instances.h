#pragma once

#include <string>

#include "zuCIM/container.h"

// The three instances of a subscription, in the namespace where servers keep them.
namespace zuCIM {

inline constexpr const char* indication_source = "Src/CIMindication";

inline constexpr const char* filter_class = "CIM_IndicationFilter";
inline constexpr const char* handler_class = "CIM_IndicationHandlerCIMXML";
inline constexpr const char* subscription_class = "CIM_IndicationSubscription";

// Makes a class of the namespace "root/interop" the current class.
void choose_interop_class(CIMcontainer& container, const char* class_name) noexcept;

// The SystemName by which a context knows its own instances again: this machine's address and the
// time when the context was made. Throws std::bad_alloc.
std::string owner_name(const CIMcontainer& container);

// The first of the instance names whose SystemName is `owner`; null when there is none. The name of
// a subscription has none of its own: there the one of the filter within it counts.
CIMelement* find_own_instance(CIMelement* names, const std::string& owner) noexcept;

// Adds to the count of those that are after indications, or resets it.
void change_listener_count(int difference) noexcept;
void reset_listener_count() noexcept;

// Traces that `function` was ended by an exception.
void trace_indication_exception(const char* function, const char* text,
                                int line = __builtin_LINE()) noexcept;

}  // namespace zuCIM
