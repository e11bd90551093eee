#include <utility>

#include "../class_check.h"
#include "../names.h"
#include "common.h"

namespace simulator {

namespace {

std::unique_ptr<Class> read_declaration(const ChangeContext& context, const char* parameter) {
  auto declared = read_class(context.parameters.required_element(parameter, "CLASS"));
  context.parameters.refuse_others();
  check_class(*declared);
  return declared;
}

// A class can change or go as long as nothing depends on it.
void check_is_free(const Namespace& name_space, const Class& type) {
  if (!type.subclasses.empty()) {
    throw CimError(CimStatus::class_has_children, type.name);
  }
  if (!name_space.instances_of(type).list().empty()) {
    throw CimError(CimStatus::class_has_instances, type.name);
  }
}

}  // namespace

void create_class(const ChangeContext& context, std::string&) {
  auto declared = read_declaration(context, "NewClass");
  Namespace& name_space = context.name_space;
  if (name_space.find_class(declared->name) != nullptr) {
    throw CimError(CimStatus::already_exists, declared->name);
  }
  if (!declared->superclass_name.empty()) {
    require_class(name_space, declared->superclass_name, CimStatus::invalid_superclass);
  }
  name_space.add_class(std::move(declared));
}

void modify_class(const ChangeContext& context, std::string&) {
  auto declared = read_declaration(context, "ModifiedClass");
  const Class& type = require_class(context.name_space, declared->name, CimStatus::not_found);
  if (!same_name(declared->superclass_name, type.superclass_name)) {
    throw CimError(CimStatus::invalid_superclass, "the superclass of " + type.name + " is \"" +
                                                      type.superclass_name + "\" and stays so");
  }
  check_is_free(context.name_space, type);
  context.name_space.replace_class(type, std::move(declared));
}

void delete_class(const ChangeContext& context, std::string&) {
  const std::string class_name = context.parameters.required_class_name("ClassName");
  context.parameters.refuse_others();

  const Class& type = require_class(context.name_space, class_name, CimStatus::not_found);
  check_is_free(context.name_space, type);
  context.name_space.remove_class(type);
}

}  // namespace simulator
