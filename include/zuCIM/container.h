#pragma once

#include <cstddef>
#include <cstdint>

#include "zuCIM/array.h"
#include "zuCIM/class.h"
#include "zuCIM/connection.h"
#include "zuCIM/export.h"
#include "zuCIM/indication.h"

namespace zuCIM {

// One property of a new instance. An array of these ends with an entry whose name is null.
struct _properties_ {
  // Name of the property; null ends the array.
  const char* name;
  // A type id, with type::array_bit for an array.
  std::uint32_t type;
  // Number of values. Without the array bit at most one is sent; an entry without values and with
  // count 0 is left out.
  std::uint32_t count;
  // The values as ValueToString reads them; for a reference the name of the referenced class.
  const void* values;
  // For a reference: the INSTANCENAME tree of the referenced instance, owned by the caller.
  CIMelement* reference;
};

// One parameter of an extrinsic method. An array of these ends with an entry whose name is null.
struct _paramvalue_ {
  // Name of the parameter; null ends the array.
  const char* name;
  // A type id, with type::array_bit for an array.
  std::uint32_t type;
  // Number of values. Without the array bit one is sent; an entry without values and with count 0
  // is left out.
  std::uint32_t count;
  // The values as ValueToString reads them; for a reference the INSTANCENAME tree of the referenced
  // instance, owned by the caller.
  const void* values;
};

// How often a context asks a server to delete, unless its member says otherwise.
namespace subscription_limit {
// Deletions that one unsubscribe or unsubscribe_all asks for in each of the three classes.
inline constexpr std::size_t most_deletions = 10000;
}  // namespace subscription_limit

// The client context of one server: its connection, the classes that the caller works with, and the
// operations.
//
// Ownership: contexts made by makeContainer belong to the registry. Results belong to the current
// class entry and stay valid until an operation on that entry empties their list: GetClass,
// GetInstance and EnumerateInstances share `instances`; EnumerateInstances, EnumerateInstanceNames,
// CreateInstance and DeleteInstance share `instanceNames`. Each of them may empty the list it
// shares, whichever filled it. GetInstance, EnumerateInstances and EnumerateInstanceNames do so
// before they send, GetClass when it has its answer, DeleteInstance and CreateInstance when they
// fail. `result` is emptied by the next request; what an operation is given may lie in it.
// Thread rule: one thread at a time.
class ZUCIM_API CIMcontainer : public CIMconnection {
 public:
  // The classes this context has worked with, with their results.
  CIMclass classes;
  // The class that requests address, an entry of `classes`; null when none is chosen.
  CIMclass* currentClass;
  // The indication listener, owned by the context; null while there is no subscription. A context
  // that is destroyed or assigned to stops it and leaves the server as it is.
  CIMindication* listener;
  // Name of the method that is being called.
  const char* methodName;
  // The context's identity, as makeContainer returned it.
  std::uint32_t index;
  // The caller's value, never interpreted.
  std::uint64_t callerValue;
  // Most deletions in one class by unsubscribe or unsubscribe_all,
  // subscription_limit::most_deletions unless changed. A server that still lists an instance to
  // delete after that many ends the class as a failed deletion does, with status 1001: one that
  // invents new names for ever must not keep its client for ever.
  std::size_t mostDeletions;
  // What the listener that subscribe makes bears from its senders. A change while there is a
  // subscription counts from the next one on.
  ListenerLimits listenerLimits;

  // Makes a context that is not registered.
  CIMcontainer() noexcept;
  // Copies a context, see operator=.
  CIMcontainer(const CIMcontainer& source) noexcept;
  ~CIMcontainer();
  // Copies everything but the listener. The current class still points into `source`'s chain.
  CIMcontainer& operator=(const CIMcontainer& source) noexcept;

  // Empties the class chain, releases the transfer handle and resets the status. Waits as
  // ESXi_Occupied(true) does while the context is busy.
  void free_all() noexcept;
  // Admits the context: resolves the server's and this machine's address, refuses a second context
  // for the same server and asks for credentials. The verdict is the status: 0, 5000 for missing
  // credentials, 5004 or 5003 for an address that was not found, 5008 for a duplicate.
  void addContainer() noexcept;

  // Chooses class and namespace for the requests that follow and returns their entry; null when
  // memory is short. A null or empty namespace means nsCIMV2.
  CIMclass* setCurrentClass(const char* class_name, const char* name_space) noexcept;

  // The pieces of a request. Each appends text to `request`; what is missing or wrong is recorded
  // as status 1001, empties the request and is traced.

  // Appends "<", the element's name and `tail`, unless that is null.
  void beginElement(int element, const char* tail) noexcept;
  // Appends an attribute, unless the id is unknown or the text empty, and `tail`, unless null.
  void addAttribute(int attribute, const char* text, const char* tail) noexcept;
  // Appends a VALUE element, unless `text` is null or empty.
  void addValue(const char* text) noexcept;
  // Appends the element's end tag; a negative id closes an empty element.
  void endElement(int element) noexcept;
  // Starts a new request: empties the texts and `result`, clears the status and appends the message
  // header.
  void addCIMXMLheader() noexcept;
  // Starts the request of an intrinsic method, by its id.
  void beginIntrinsicMethod(int method) noexcept;
  // Appends the namespace of the current class.
  void addLocalNameSpacePath() noexcept;
  // Appends the ClassName parameter; without a class name this is an error if `required` is 1.
  void addClassNameParam(int required) noexcept;
  // Appends the InstanceName parameter. The element must not lie in `result`, which the start of
  // the request emptied.
  void addInstanceNameParam(CIMelement* instance_name) noexcept;
  // Appends a boolean parameter if `value` is 0 or 1. `parameter`: 0 LocalOnly, 1
  // IncludeQualifiers, 2 IncludeClassOrigin, 3 DeepInheritance.
  void addOptionalParameter(int parameter, int value) noexcept;
  // Appends the PropertyList parameter; nothing for a null list. The entries are texts.
  void addOptionalPropertyList(const CIMarray* names) noexcept;

  // Closes the request of an intrinsic method and sends it; transport failures are tried again up
  // to ten times, two seconds apart, unless the extra time-out is negative. Returns the status.
  int performIntrinsicMethod() noexcept;

  // The operations. Flags: 1 sends true, 0 sends false, -1 leaves the parameter out. A null
  // property list asks for all properties. Results that carry a pointer are 0 on every failure; the
  // status tells which. An answer that cannot be used gives 0 with status 0, and traces at the
  // error level.

  // Reads the definition of the current class: the entry's `instances` becomes a template of its
  // properties, `methods` its methods. Returns 0 or the status; 1001 with status 0 when the answer
  // does not define the class.
  int Imethod_GetClass(int local_only, int include_qualifiers, int include_class_origin,
                       const CIMarray* property_list) noexcept;
  // Reads one instance into the entry's `instances`; returns the INSTANCE element.
  std::intptr_t Imethod_GetInstance(CIMelement* instance_name, int include_class_origin,
                                    const CIMarray* property_list) noexcept;
  // Reads the instances of the current class into the entry's `instanceNames` and `instances`,
  // which run in step; returns the first INSTANCENAME element. 0 with status 0 means no instances,
  // or a malformed answer, which is traced at the error level.
  std::intptr_t Imethod_EnumerateInstances(int local_only, int include_qualifiers,
                                           int include_class_origin, int deep_inheritance,
                                           const CIMarray* property_list) noexcept;
  // Reads the instance names of the current class into the entry's `instanceNames`; returns the
  // first INSTANCENAME element.
  CIMelement* Imethod_EnumerateInstanceNames() noexcept;

  // Deletes the current class on the server. Returns the status.
  int Imethod_DeleteClass() noexcept;
  // Deletes an instance on the server. After success the element passed, made with new, is removed
  // from its tree and freed (one out of `result` is freed with that in any case); when it was the
  // first of the entry's `instanceNames`, and after every failure, that list is emptied. Returns
  // the status.
  int Imethod_DeleteInstance(CIMelement* instance_name) noexcept;
  // Creates the class that a CLASS element defines. Returns the status.
  int Imethod_CreateClass(CIMelement& new_class) noexcept;
  // Creates an instance of the current class; returns the INSTANCENAME element of the new instance,
  // appended to the entry's `instanceNames`. That list is emptied when the exchange fails; a
  // property of an unknown type or a null array is refused before, and leaves it.
  std::intptr_t Imethod_CreateInstance(const _properties_* properties) noexcept;
  // Changes a class to what a CLASS element defines. Returns the status.
  int Imethod_ModifyClass(CIMelement& modified_class) noexcept;
  // Changes an instance to what an INSTANCE element says. Returns the status.
  int Imethod_ModifyInstance(CIMelement* instance_name, CIMelement& instance,
                             const CIMarray* property_list) noexcept;
  // Reads the classes below the current class, or all without a class name. The answer stays in
  // `result`. Returns the status.
  int Imethod_EnumerateClasses(int local_only, int include_qualifiers, int include_class_origin,
                               int deep_inheritance) noexcept;
  // The same for the names of the classes.
  int Imethod_EnumerateClassNames(int deep_inheritance) noexcept;
  // Asks for all properties of the instances of a class: the query is "select * from" that class.
  // The answer stays in `result`. Returns the status.
  int Imethod_ExecQuery(const char* query_language, const char* class_name) noexcept;
  // Reads one property of an instance. The answer stays in `result`. Returns the status.
  int Imethod_GetProperty(CIMelement* instance_name, const char* property_name) noexcept;
  // Writes one property of an instance; a null or empty value leaves the value out, which makes it
  // null. Returns the status.
  int Imethod_SetProperty(CIMelement* instance_name, const char* property_name,
                          const char* new_value) noexcept;

  // These operations are not implemented: they send nothing, change nothing and return 1001.
  int Imethod_Associators() noexcept;
  int Imethod_AssociatorNames() noexcept;
  int Imethod_References() noexcept;
  int Imethod_ReferenceNames() noexcept;
  int Imethod_GetQualifier() noexcept;
  int Imethod_SetQualifier() noexcept;
  int Imethod_DeleteQualifier() noexcept;
  int Imethod_EnumerateQualifiers() noexcept;

  // Calls a method that the class of an instance defines. `name` must stay valid until the next
  // request, unless it lies in `result`: then `methodName` is null afterwards. `parameters` ends
  // with an entry whose name is null. Returns the status: 0 when the method returned 0, else the
  // number it returned (the nearest int), 1001 for an answer without one. The answer, with the out
  // parameters, stays in `result` after success. An array of several references is refused with
  // 1001, and the status stays 0.
  int performExtrinsicMethod(const char* name, CIMelement* instance_name,
                             const _paramvalue_* parameters) noexcept;

  // Appends the names of the server's namespaces to `names`, an array of texts. Returns 0 or the
  // status, 5005 when nothing was found and no other status was recorded.
  int getNameSpace(CIMarray& names) noexcept;

  // Indications. A subscription is three instances in the server's namespace "root/interop"
  // (filter, handler, and the subscription that binds them) and a listener in this process. The
  // context knows its instances again by their SystemName, which is made of `localIP` and
  // `createdAt`. These functions are operations: the context has to be busy, each request is tried
  // again as performIntrinsicMethod says, and the current class is another one afterwards.

  // Subscribes to the indications that `filter` describes and starts the listener, which hands them
  // to `callback` (see IndicationCallback; not null) on threads of its own. The server sends them
  // to http://`localIP`:`listener_port`/test; the port is from 1 on.
  //
  // Both lists end with an entry whose name is null. They are written to and must stay alive during
  // the call: the filter needs entries named CreationClassName and SystemName, the handler these
  // and Destination (in any case, of the type string, with count 1), whose values are replaced.
  // Values that this put into SystemName and Destination are gone when it returns. All other
  // properties, for example Name, Query and QueryLanguage, are sent as the caller filled them.
  //
  // Returns 0 or 1001. After a failure `unsubscribe` has removed what was made; the status is that
  // one's, and the traces tell what failed. A server that could not be asked to remove anything
  // leaves the context subscribed, as a failed unsubscribe does. A port that is in use does not
  // fail the call: subscribe_check tells.
  int subscribe(IndicationCallback callback, int listener_port, _properties_* filter,
                _properties_* handler) noexcept;
  // Deletes this context's subscription, filter and handler on the server, and stops and destroys
  // the listener. Returns 0, also when there is no subscription (then nothing is sent), else 1001
  // with the reason as status: then the listener goes on, and the call may be tried again. A server
  // that lists an instance again right after it said that it deleted it makes it fail with status
  // 1001, and so does one that lists more than `mostDeletions` of a class. May wait for the
  // listener's thread, at most 30 seconds.
  int unsubscribe() noexcept;
  // Deletes all subscriptions, filters and handlers in the server's "root/interop", other clients'
  // too, and then unsubscribes this context. Goes on with the next class after a failure. Returns
  // the status of the last request, or that of unsubscribe when the context was subscribed.
  int unsubscribe_all() noexcept;
  // What of this context's subscription is missing: 0x1 the subscription, 0x10 the filter and 0x100
  // the handler on the server, 0x1000 a listener that listens; 0 when all is there. What the server
  // could not be asked for counts as missing. With do_cim_debug set, the SystemName of each
  // instance that the server lists is traced at the warning level.
  unsigned subscribe_check() noexcept;

  // Moving results out of `result`, or a tree of the caller's, into the current class entry.

  // Moves a run of INSTANCENAME elements; returns the first one moved, or 0.
  std::intptr_t ExtractInstanceNames(CIMelement* tree) noexcept;
  // Moves a run of INSTANCE elements; returns the first one moved, or 0.
  std::intptr_t ExtractInstance(CIMelement* tree) noexcept;
  // Moves the named instances of `result`; returns the first INSTANCENAME, or 0.
  std::intptr_t ExtractNamedInstances() noexcept;
  // Turns the CLASS of `result` into an instance template and a list of methods. Returns 0 or 1001.
  int ExtractClassDefinition() noexcept;
};

// All contexts of the process. Contexts lie in the array by value; change it with the functions
// below only.
extern ZUCIM_API CIMarray gCIMContainers;

// Makes and registers a context for `server` and returns its index, which is never used again. The
// context is not admitted yet. May be called from several threads at once.
ZUCIM_API std::uint32_t makeContainer(const _THR_SERVER_* server,
                                      std::uint64_t caller_value) noexcept;
// The position of the context with this index; -1 when there is none. Positions shift when contexts
// are erased.
ZUCIM_API int getCIM(unsigned index) noexcept;
// The context at this position, owned by the registry; null when there is none.
ZUCIM_API CIMcontainer* getContainer(unsigned position) noexcept;
// The number of contexts.
ZUCIM_API int getContainerSize() noexcept;

// Giving contexts back. Both end a context's subscription on its server (see unsubscribe), whatever
// comes of that, and then free_all and destroy the context. Nobody may use it or look contexts up
// meanwhile.
//
// Of a subscribed context the order is: call `unsubscribe` while the context is busy, then
// ESXi_Occupied(false), then one of these. One that is still busy makes free_all wait for 30
// seconds; one that is not busy cannot send the requests of `unsubscribe`, and its instances stay
// on the server.

// Releases and removes the registered context that has the index of `context`: that one itself or a
// copy. Does nothing when there is none. Later contexts move down one position; their addresses and
// indices stay. A pointer or reference to the removed context is no longer valid.
ZUCIM_API void eraseContainers(CIMcontainer& context) noexcept;
// Releases all contexts and empties the registry; returns 0. Indices go on where they were.
ZUCIM_API int clearContainers() noexcept;

// Formats element `index` of an array of `type` (a type id) for a request; replaces `text` and
// returns its length. A null array returns 0 and leaves `text`; char16, datetime and unknown types
// give an empty text. For strings `values` itself is the text.
ZUCIM_API int ValueToString(const void* values, unsigned index, int type,
                            std::string& text) noexcept;

}  // namespace zuCIM
