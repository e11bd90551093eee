#pragma once

#include <memory>

#include "model.h"
#include "xml_reader.h"

namespace simulator {

// Fits the values of a declaration to the class: positions, types, defaults of the class for what
// is not given. Throws DeclarationError where they do not fit.
std::unique_ptr<Instance> build_instance(const Class& type, InstanceDeclaration declaration);

// Checks a value that is given for a property against what the class says of it.
// Throws DeclarationError where they do not fit.
void check_value(const Class& type, const Property& property,
                 const InstanceDeclaration::NamedValue& given);

// Whether a value, which may be null, is of the type and shape of a property or parameter.
bool fits(const std::string& type, Shape shape, const Value& value);

}  // namespace simulator
