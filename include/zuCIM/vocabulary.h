#pragma once

#include "BRQ/ModuleInfo.h"
#include "zuCIM/export.h"

// The version of the library; the build takes it from here.
#define ZUCIM_VERSION "5.8.12"

// The names of CIM-XML, in tables that are indexed by id. All data here is constant and may be read
// from any thread.
namespace zuCIM {

// Element ids: the rows of known_cim_elements.
namespace elem {
enum : int {
  XML_DECLARATION = 0,
  CIM,
  CLASS,
  CLASSNAME,
  CLASSPATH,
  DECLARATION,
  DECLGROUP,
  DECLGROUP_WITHNAME,
  DECLGROUP_WITHPATH,
  ERROR,
  EXPMETHODCALL,
  EXPMETHODRESPONSE,
  EXPPARAMVALUE,
  HOST,
  IMETHODCALL,
  IMETHODRESPONSE,
  INSTANCE,
  INSTANCENAME,
  INSTANCEPATH,
  IPARAMVALUE,
  IRETURNVALUE,
  KEYBINDING,
  KEYVALUE,
  LOCALCLASSPATH,
  LOCALINSTANCEPATH,
  LOCALNAMESPACEPATH,
  MESSAGE,
  METHOD,
  METHODCALL,
  METHODRESPONSE,
  MULTIEXPREQ,
  MULTIEXPRSP,
  MULTIREQ,
  MULTIRSP,
  NAMESPACE,
  NAMESPACEPATH,
  OBJECTPATH,
  PARAMETER,
  PARAMETER_ARRAY,
  PARAMETER_REFARRAY,
  PARAMETER_REFERENCE,
  PARAMVALUE,
  PROPERTY,
  PROPERTY_ARRAY,
  PROPERTY_REFERENCE,
  QUALIFIER,
  QUALIFIER_DECLARATION,
  RESPONSEDESTINATION,
  RETURNVALUE,
  SCOPE,
  SIMPLEEXPREQ,
  SIMPLEEXPRSP,
  SIMPLEREQ,
  SIMPLEREQACK,
  SIMPLERSP,
  TABLE,
  TABLECELL_DECLARATION,
  TABLECELL_REFERENCE,
  TABLEROW,
  TABLEROW_DECLARATION,
  VALUE,
  VALUE_ARRAY,
  VALUE_NAMEDINSTANCE,
  VALUE_NAMEDOBJECT,
  VALUE_NULL,
  VALUE_OBJECT,
  VALUE_OBJECTWITHLOCALPATH,
  VALUE_OBJECTWITHPATH,
  VALUE_REFARRAY,
  VALUE_REFERENCE,
  UNKNOWN,
  COUNT
};
}  // namespace elem

// Attribute ids: the rows of known_cim_attributes.
namespace attr {
enum : int {
  NAME = 0,
  TYPE,
  ARRAYSIZE,
  ASSOCIATION,
  CELLPOS,
  CIMVERSION,
  CLASS,
  CLASSNAME,
  CLASSORIGIN,
  CODE,
  DESCRIPTION,
  DTDVERSION,
  ID,
  INDICATION,
  INSTANCEID,
  ISARRAY,
  METHOD,
  OVERRIDABLE,
  PARAMETER,
  PARAMTYPE,
  PROPAGATED,
  PROPERTY,
  PROTOCOLVERSION,
  REFERENCE,
  REFERENCECLASS,
  SORTDIR,
  SORTPOS,
  SUPERCLASS,
  VALUETYPE,
  TOSUBCLASS,
  TOINSTANCE,
  TRANSLATABLE,
  EMBEDDEDOBJECT,
  UNKNOWN,
  COUNT
};
}  // namespace attr

// Type ids: the rows of known_cim_types. `unknown` stands before `reference`.
namespace type {
enum : int {
  boolean = 0,
  string,
  char16,
  uint8,
  sint8,
  uint16,
  sint16,
  uint32,
  sint32,
  uint64,
  sint64,
  datetime,
  real32,
  real64,
  unknown,
  reference,
  count
};
// The bit of a type word that makes the value an array.
inline constexpr unsigned array_bit = 0x100;
}  // namespace type

// Intrinsic-method ids: the rows of known_cim_imethods.
namespace imethod {
enum : int {
  GetClass = 0,
  GetInstance,
  DeleteClass,
  DeleteInstance,
  CreateClass,
  CreateInstance,
  ModifyClass,
  ModifyInstance,
  EnumerateClasses,
  EnumerateClassNames,
  EnumerateInstances,
  EnumerateInstanceNames,
  ExecQuery,
  Associators,
  AssociatorNames,
  References,
  ReferenceNames,
  GetProperty,
  SetProperty,
  GetQualifier,
  SetQualifier,
  DeleteQualifier,
  EnumerateQualifiers,
  unknown,
  count
};
}  // namespace imethod

// Element names by element id. The kind of an element is the address of its row, so a node stores
// the row's pointer, never an equal text.
extern ZUCIM_API const char* const known_cim_elements[elem::COUNT];
// Attribute names by attribute id.
extern ZUCIM_API const char* const known_cim_attributes[attr::COUNT];
// CIM data types by type id, as TYPE and PARAMTYPE attributes carry them.
extern ZUCIM_API const char* const known_cim_types[type::count];
// Names of the intrinsic methods by method id. Row 22 is published as "EnumarateQualifiers".
extern ZUCIM_API const char* const known_cim_imethods[imethod::count];

// Names of key properties and of the properties of subscriptions.
extern ZUCIM_API const char* const PROP_QUERYLANGUAGE;
extern ZUCIM_API const char* const PROP_QUERY;
extern ZUCIM_API const char* const PROP_SYSCREATIONCLASSNAME;
extern ZUCIM_API const char* const PROP_DESTINATION;
extern ZUCIM_API const char* const PROP_SOURCENAMESPACE;
extern ZUCIM_API const char* const PROP_NAME;
extern ZUCIM_API const char* const PROP_CREATIONCLASSNAME;
extern ZUCIM_API const char* const PROP_SYSTEMNAME;

// The namespace that is meant where a caller names none: "root/cimv2".
extern ZUCIM_API const char* const nsCIMV2;

// Under this record the library writes its traces; its mask of trace levels starts with what the
// environment variable ZUBRQ_TRACE says for "zuCIM".
extern ZUCIM_API BRQ::Misc::CModuleInfo BRQ_MODULE_INFO_zuCIM;

// Trace levels, one bit each.
namespace trace_level {
inline constexpr unsigned progress = 0x2;      // entry, exit and progress of an operation
inline constexpr unsigned warning = 0x4;       // errors, warnings, the dump of an exchange
inline constexpr unsigned detail = 0x10;       // transfer handle and listener details
inline constexpr unsigned error = 0x40000000;  // errors
}  // namespace trace_level

// Status codes of the library; beside them stand libcurl's codes, CIM status codes as a server
// sent them, and http_status_base + n for an HTTP status n.
namespace status {
inline constexpr int success = 0;
inline constexpr int busy_flag_not_set = 27;
inline constexpr int failure = 1001;
inline constexpr int credentials = 5000;
inline constexpr int no_data = 5001;
inline constexpr int unparseable_answer = 5002;
inline constexpr int server_address = 5003;
inline constexpr int local_address = 5004;
inline constexpr int no_namespace = 5005;
inline constexpr int duplicate_server = 5008;
inline constexpr int http_status_base = 10000;
}  // namespace status

// Bits of CIMconnection::infoFlags.
namespace info_flag {
inline constexpr unsigned not_busy = 0x40;              // refused: the busy flag was not set
inline constexpr unsigned credentials_refused = 0x200;  // the server refused the credentials
inline constexpr unsigned no_connection = 0x400;        // no connection
}  // namespace info_flag

}  // namespace zuCIM
