#include <cstddef>
#include <exception>
#include <string>
#include <utility>

#include "CIMindication/interop_instances.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

// The subscription refers to the other two, so it goes first.
constexpr const char* classes_in_order_of_deletion[] = {subscription_class, filter_class,
                                                        handler_class};

// An instance name as text; empty when it cannot be written.
std::string text_of(CIMelement& name) {
  std::string text;
  if (name.GenerateCIMXML(text) != status::success) text.clear();
  return text;
}

void fail(CIMcontainer& container, const char* text, int line = __builtin_LINE()) noexcept {
  container.SetCimStatus_FL(status::failure, text, indication_source, line);
}

// Deletes instances of a class until `choose` finds none among the names that the server lists, or
// something fails; the status tells which. There is an end to it also when the server invents a new
// instance for each that it deletes.
template <class Choose>
void delete_instances(CIMcontainer& container, const char* class_name, Choose choose) {
  choose_interop_class(container, class_name);
  std::string last;
  for (std::size_t deletions = 0;; ++deletions) {
    CIMelement* const name = choose(container.Imethod_EnumerateInstanceNames());
    if (name == nullptr) return;
    std::string text = text_of(*name);
    // Without this a server that only pretends to delete would be asked for ever.
    if (!text.empty() && text == last)
      return fail(container, "the server still lists an instance that it has deleted");
    if (deletions >= container.mostDeletions)
      return fail(container, "the server lists more instances than may be deleted");
    if (container.Imethod_DeleteInstance(name) != status::success) return;
    last = std::move(text);
  }
}

// Deletes this context's three instances. Throws std::bad_alloc.
bool delete_own_instances(CIMcontainer& container) {
  const std::string owner = owner_name(container);
  container.cimStatus = status::success;
  const auto own = [&owner](CIMelement* names) { return find_own_instance(names, owner); };
  for (const char* const class_name : classes_in_order_of_deletion) {
    delete_instances(container, class_name, own);
    if (container.ChkCimStatus() != status::success) return false;
  }
  return true;
}

// The second stop is for a thread that opened its port only after the first one.
void end_listener(CIMcontainer& container) noexcept {
  container.listener->stop_Listener();
  container.listener->stop_Listener();
  delete std::exchange(container.listener, nullptr);
  reset_listener_count();
}

}  // namespace

int CIMcontainer::unsubscribe() noexcept {
  if (listener == nullptr) return cimStatus = status::success;
  try {
    if (!delete_own_instances(*this)) return status::failure;
  } catch (const std::exception& error) {
    trace_indication_exception("unsubscribe", error.what());
    return cimStatus = status::failure;
  }
  end_listener(*this);
  return ChkCimStatus();
}

int CIMcontainer::unsubscribe_all() noexcept {
  const auto first = [](CIMelement* names) { return names; };
  for (const char* const class_name : classes_in_order_of_deletion)
    delete_instances(*this, class_name, first);
  if (listener != nullptr) unsubscribe();
  return ChkCimStatus();
}

}  // namespace zuCIM
