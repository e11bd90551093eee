#include "cim_error.h"

namespace simulator {

const char* status_name(CimStatus status) {
  switch (status) {
    case CimStatus::failed:
      return "CIM_ERR_FAILED";
    case CimStatus::access_denied:
      return "CIM_ERR_ACCESS_DENIED";
    case CimStatus::invalid_namespace:
      return "CIM_ERR_INVALID_NAMESPACE";
    case CimStatus::invalid_parameter:
      return "CIM_ERR_INVALID_PARAMETER";
    case CimStatus::invalid_class:
      return "CIM_ERR_INVALID_CLASS";
    case CimStatus::not_found:
      return "CIM_ERR_NOT_FOUND";
    case CimStatus::not_supported:
      return "CIM_ERR_NOT_SUPPORTED";
    case CimStatus::class_has_children:
      return "CIM_ERR_CLASS_HAS_CHILDREN";
    case CimStatus::class_has_instances:
      return "CIM_ERR_CLASS_HAS_INSTANCES";
    case CimStatus::invalid_superclass:
      return "CIM_ERR_INVALID_SUPERCLASS";
    case CimStatus::already_exists:
      return "CIM_ERR_ALREADY_EXISTS";
    case CimStatus::no_such_property:
      return "CIM_ERR_NO_SUCH_PROPERTY";
    case CimStatus::type_mismatch:
      return "CIM_ERR_TYPE_MISMATCH";
    case CimStatus::query_language_not_supported:
      return "CIM_ERR_QUERY_LANGUAGE_NOT_SUPPORTED";
    case CimStatus::invalid_query:
      return "CIM_ERR_INVALID_QUERY";
    case CimStatus::method_not_available:
      return "CIM_ERR_METHOD_NOT_AVAILABLE";
    case CimStatus::method_not_found:
      return "CIM_ERR_METHOD_NOT_FOUND";
  }
  return "CIM_ERR_FAILED";
}

CimError::CimError(CimStatus status, const std::string& detail)
    : std::runtime_error(std::string(status_name(status)) + ": " + detail), status_(status) {}

void refuse(const std::string& detail) {
  throw CimError(CimStatus::invalid_parameter, detail);
}

}  // namespace simulator
