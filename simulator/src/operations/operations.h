#pragma once

#include <string>
#include <string_view>

#include "../indications/indications.h"
#include "../parameters.h"
#include "../protocol.h"
#include "../repository.h"
#include "../xml_writer.h"

namespace simulator {

// What an intrinsic operation works on.
struct OperationContext {
  const Namespace& name_space;
  Parameters& parameters;
  WireStyle style;
};

// What an operation works on that changes a namespace.
struct ChangeContext {
  Namespace& name_space;
  Parameters& parameters;
  Indications& indications;
  const Peer& peer;
};

// Each operation appends the content of its IRETURNVALUE, or throws CimError.
void get_class(const OperationContext& context, std::string& out);
void enumerate_classes(const OperationContext& context, std::string& out);
void enumerate_class_names(const OperationContext& context, std::string& out);
void get_instance(const OperationContext& context, std::string& out);
void enumerate_instances(const OperationContext& context, std::string& out);
void enumerate_instance_names(const OperationContext& context, std::string& out);
void get_property(const OperationContext& context, std::string& out);
void exec_query(const OperationContext& context, std::string& out);
void create_class(const ChangeContext& context, std::string& out);
void modify_class(const ChangeContext& context, std::string& out);
void delete_class(const ChangeContext& context, std::string& out);
void create_instance(const ChangeContext& context, std::string& out);
void modify_instance(const ChangeContext& context, std::string& out);
void delete_instance(const ChangeContext& context, std::string& out);
void set_property(const ChangeContext& context, std::string& out);

}  // namespace simulator
