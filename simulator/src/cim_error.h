#pragma once

#include <stdexcept>
#include <string>

namespace simulator {

// The status codes of CIM operations that this server answers with.
enum class CimStatus {
  failed = 1,
  access_denied = 2,
  invalid_namespace = 3,
  invalid_parameter = 4,
  invalid_class = 5,
  not_found = 6,
  not_supported = 7,
  class_has_children = 8,
  class_has_instances = 9,
  invalid_superclass = 10,
  already_exists = 11,
  no_such_property = 12,
  type_mismatch = 13,
  query_language_not_supported = 14,
  invalid_query = 15,
  method_not_available = 16,
  method_not_found = 17,
};

// The standard's name of a status code, for example "CIM_ERR_NOT_FOUND".
const char* status_name(CimStatus status);

// An operation that ends in an ERROR element.
class CimError : public std::runtime_error {
 public:
  // `detail` says what was wrong; the status name is put before it.
  CimError(CimStatus status, const std::string& detail);

  CimStatus status() const { return status_; }

 private:
  CimStatus status_;
};

// Ends an operation that was given something it cannot take, with CIM_ERR_INVALID_PARAMETER.
[[noreturn]] void refuse(const std::string& detail);

}  // namespace simulator
