#include "zuCIM/vocabulary.h"

namespace zuCIM {

const char* const known_cim_elements[elem::COUNT] = {
    "?xml",
    "CIM",
    "CLASS",
    "CLASSNAME",
    "CLASSPATH",
    "DECLARATION",
    "DECLGROUP",
    "DECLGROUP.WITHNAME",
    "DECLGROUP.WITHPATH",
    "ERROR",
    "EXPMETHODCALL",
    "EXPMETHODRESPONSE",
    "EXPPARAMVALUE",
    "HOST",
    "IMETHODCALL",
    "IMETHODRESPONSE",
    "INSTANCE",
    "INSTANCENAME",
    "INSTANCEPATH",
    "IPARAMVALUE",
    "IRETURNVALUE",
    "KEYBINDING",
    "KEYVALUE",
    "LOCALCLASSPATH",
    "LOCALINSTANCEPATH",
    "LOCALNAMESPACEPATH",
    "MESSAGE",
    "METHOD",
    "METHODCALL",
    "METHODRESPONSE",
    "MULTIEXPREQ",
    "MULTIEXPRSP",
    "MULTIREQ",
    "MULTIRSP",
    "NAMESPACE",
    "NAMESPACEPATH",
    "OBJECTPATH",
    "PARAMETER",
    "PARAMETER.ARRAY",
    "PARAMETER.REFARRAY",
    "PARAMETER.REFERENCE",
    "PARAMVALUE",
    "PROPERTY",
    "PROPERTY.ARRAY",
    "PROPERTY.REFERENCE",
    "QUALIFIER",
    "QUALIFIER.DECLARATION",
    "RESPONSEDESTINATION",
    "RETURNVALUE",
    "SCOPE",
    "SIMPLEEXPREQ",
    "SIMPLEEXPRSP",
    "SIMPLEREQ",
    "SIMPLEREQACK",
    "SIMPLERSP",
    "TABLE",
    "TABLECELL.DECLARATION",
    "TABLECELL.REFERENCE",
    "TABLEROW",
    "TABLEROW.DECLARATION",
    "VALUE",
    "VALUE.ARRAY",
    "VALUE.NAMEDINSTANCE",
    "VALUE.NAMEDOBJECT",
    "VALUE.NULL",
    "VALUE.OBJECT",
    "VALUE.OBJECTWITHLOCALPATH",
    "VALUE.OBJECTWITHPATH",
    "VALUE.REFARRAY",
    "VALUE.REFERENCE",
    "unknown",
};

const char* const known_cim_attributes[attr::COUNT] = {
    "NAME",
    "TYPE",
    "ARRAYSIZE",
    "ASSOCIATION",
    "CELLPOS",
    "CIMVERSION",
    "CLASS",
    "CLASSNAME",
    "CLASSORIGIN",
    "CODE",
    "DESCRIPTION",
    "DTDVERSION",
    "ID",
    "INDICATION",
    "INSTANCEID",
    "ISARRAY",
    "METHOD",
    "OVERRIDABLE",
    "PARAMETER",
    "PARAMTYPE",
    "PROPAGATED",
    "PROPERTY",
    "PROTOCOLVERSION",
    "REFERENCE",
    "REFERENCECLASS",
    "SORTDIR",
    "SORTPOS",
    "SUPERCLASS",
    "VALUETYPE",
    "TOSUBCLASS",
    "TOINSTANCE",
    "TRANSLATABLE",
    "EmbeddedObject",
    "unknown",
};

const char* const known_cim_types[type::count] = {
    "boolean", "string", "char16", "uint8",    "sint8",  "uint16", "sint16",  "uint32",
    "sint32",  "uint64", "sint64", "datetime", "real32", "real64", "unknown", "reference",
};

// Row 22 is published, and known to servers, in this spelling.
const char* const known_cim_imethods[imethod::count] = {
    "GetClass",         "GetInstance",         "DeleteClass",         "DeleteInstance",
    "CreateClass",      "CreateInstance",      "ModifyClass",         "ModifyInstance",
    "EnumerateClasses", "EnumerateClassNames", "EnumerateInstances",  "EnumerateInstanceNames",
    "ExecQuery",        "Associators",         "AssociatorNames",     "References",
    "ReferenceNames",   "GetProperty",         "SetProperty",         "GetQualifier",
    "SetQualifier",     "DeleteQualifier",     "EnumarateQualifiers", "unknown",
};

const char* const PROP_QUERYLANGUAGE = "QueryLanguage";
const char* const PROP_QUERY = "Query";
const char* const PROP_SYSCREATIONCLASSNAME = "SystemCreationClassName";
const char* const PROP_DESTINATION = "Destination";
const char* const PROP_SOURCENAMESPACE = "SourceNamespace";
const char* const PROP_NAME = "Name";
const char* const PROP_CREATIONCLASSNAME = "CreationClassName";
const char* const PROP_SYSTEMNAME = "SystemName";

const char* const nsCIMV2 = "root/cimv2";

}  // namespace zuCIM
