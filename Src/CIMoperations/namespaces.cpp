#include "BRQ/Trace.h"
#include "CIMoperations/entry_trace.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// Finding the namespaces of a server.
namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMoperations";
constexpr int text_size = -1;
constexpr int spare_slots = 15;

// The instance name that follows `name` and its subtree.
CIMelement* next_instance_name(CIMelement* name) {
  CIMelement* const after = name->getLastElement()->next;
  return after->findelement(elem::INSTANCENAME, 0);
}

// Reads the instances of CIM_Namespace into `entry`, which is the current class meanwhile.
bool read_namespaces(CIMcontainer& container, CIMclass& entry) {
  CIMclass* const remembered = container.currentClass;
  container.currentClass = &entry;
  const bool found = container.Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr) != 0;
  container.currentClass = remembered;
  if (!found)
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "[%s] getNameSpace: missing 'CIM_Namespace' or 'root/interop'", container.host);
  return found;
}

bool append_names(const CIMcontainer& container, CIMelement* list, CIMarray& names) {
  CIMelement* name = list->findelement(elem::INSTANCENAME, 0);
  for (; name != nullptr; name = next_instance_name(name)) {
    const char* const text = name->getValueOf(elem::KEYBINDING, PROP_NAME);
    if (text == nullptr) {
      BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
                "[%s] getNameSpace: KEYBINDING Name=\"??\"", container.host);
      return false;
    }
    if (names.putargv(text, text_size, spare_slots) == nullptr) return false;
  }
  return true;
}

}  // namespace

int CIMcontainer::getNameSpace(CIMarray& names) noexcept {
  trace_entry(*this, "getNameSpace()");
  CIMclass namespaces;
  namespaces.setClassName("CIM_Namespace", "root/interop");
  if (read_namespaces(*this, namespaces)) {
    const std::uint32_t count = names.argc;
    const bool complete = append_names(*this, namespaces.instanceNames, names);
    if (names.argc != count) names.FreeUnused();
    if (complete) return status::success;
  }
  if (cimStatus == status::success) cimStatus = status::no_namespace;
  return ChkCimStatus();
}

}  // namespace zuCIM
