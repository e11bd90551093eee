#include "repository.h"

#include <algorithm>
#include <utility>

#include "cim_error.h"
#include "inheritance.h"
#include "names.h"
#include "value_check.h"

namespace simulator {

namespace {

// Length-prefixed, so that no two different lists of keys give the same text.
void append_field(std::string& out, const std::string& field) {
  out += std::to_string(field.size());
  out += ':';
  out += field;
}

void collect(const std::vector<const Class*>& level, bool deep, std::vector<const Class*>& out) {
  for (const Class* each : level) {
    out.push_back(each);
    if (deep) collect(each->subclasses, deep, out);
  }
}

const KeyBinding* find_binding(const InstanceName& name, const Property& property) {
  // A path may carry the value of a single key without the key's name.
  if (name.keys.size() == 1 && name.keys.front().name.empty()) return &name.keys.front();
  const auto found = std::find_if(name.keys.begin(), name.keys.end(), [&](const KeyBinding& key) {
    return same_name(key.name, property.name);
  });
  return found == name.keys.end() ? nullptr : &*found;
}

}  // namespace

const Instance* InstanceSet::find(const std::string& keys) const {
  const auto found = by_keys_.find(keys);
  return found == by_keys_.end() ? nullptr : found->second;
}

bool InstanceSet::add(std::unique_ptr<Instance> instance, const std::string& keys) {
  if (!by_keys_.emplace(keys, instance.get()).second) return false;
  instances_.push_back(std::move(instance));
  return true;
}

void InstanceSet::remove(const std::string& keys) {
  const auto found = by_keys_.find(keys);
  if (found == by_keys_.end()) return;
  const Instance* gone = found->second;
  by_keys_.erase(found);
  std::erase_if(instances_, [gone](const auto& each) { return each.get() == gone; });
}

void InstanceSet::reserve(std::size_t count) {
  instances_.reserve(count);
  by_keys_.reserve(count);
}

const Class* Namespace::find_class(std::string_view class_name) const {
  const auto found = by_name_.find(folded(class_name));
  return found == by_name_.end() ? nullptr : found->second;
}

std::vector<const Class*> Namespace::subclasses(const Class* base, bool deep) const {
  std::vector<const Class*> result;
  if (base != nullptr) {
    collect(base->subclasses, deep, result);
    return result;
  }
  std::vector<const Class*> roots;
  for (const auto& each : classes_) {
    if (each->superclass == nullptr) roots.push_back(each.get());
  }
  collect(roots, deep, result);
  return result;
}

const Class& Namespace::add_class(std::unique_ptr<Class> declared) {
  Class* superclass = superclass_of(*declared);
  inherit(*declared, superclass);
  if (!by_name_.emplace(folded(declared->name), declared.get()).second) {
    throw DeclarationError(declared->name + " is declared twice in " + name_);
  }
  if (superclass != nullptr) superclass->subclasses.push_back(declared.get());
  classes_.push_back(std::move(declared));
  return *classes_.back();
}

void Namespace::remove_class(const Class& type) {
  const Class* gone = &type;
  if (Class* superclass = superclass_of(type)) std::erase(superclass->subclasses, gone);
  instances_.erase(gone);
  by_name_.erase(folded(type.name));
  std::erase_if(classes_, [gone](const auto& each) { return each.get() == gone; });
}

void Namespace::replace_class(const Class& type, std::unique_ptr<Class> declared) {
  Class trial = *declared;
  inherit(trial, superclass_of(trial));
  remove_class(type);
  add_class(std::move(declared));
}

Class* Namespace::superclass_of(const Class& declared) const {
  if (declared.superclass_name.empty()) return nullptr;
  const auto found = by_name_.find(folded(declared.superclass_name));
  if (found != by_name_.end()) return found->second;
  throw DeclarationError(declared.name + " names the unknown superclass " +
                         declared.superclass_name);
}

const InstanceSet& Namespace::instances_of(const Class& type) const {
  static const InstanceSet none;
  const auto found = instances_.find(&type);
  return found == instances_.end() ? none : found->second;
}

void Namespace::add_instance(std::unique_ptr<Instance> instance) {
  const Class& type = *instance->type;
  if (type.keys.empty()) {
    throw DeclarationError(type.name + " has no keys, so it can have no instances");
  }
  const std::string keys = canonical_keys(*instance);
  if (!instances_[&type].add(std::move(instance), keys)) {
    throw DeclarationError("two instances of " + type.name + " have the same keys in " + name_);
  }
}

void Namespace::reserve_instances(const Class& type, std::size_t count) {
  instances_[&type].reserve(count);
}

const Instance* Namespace::find_instance(const Class& type, const InstanceName& name) const {
  if (name.keys.size() != type.keys.size()) {
    throw CimError(CimStatus::invalid_parameter,
                   "InstanceName has " + std::to_string(name.keys.size()) + " keys where " +
                       type.name + " has " + std::to_string(type.keys.size()));
  }
  std::string keys;
  for (const std::size_t position : type.keys) {
    const Property& property = type.properties[position];
    const KeyBinding* binding = find_binding(name, property);
    if (binding == nullptr) {
      throw CimError(CimStatus::invalid_parameter,
                     "InstanceName lacks the key " + property.name + " of " + type.name);
    }
    append_field(keys, canonical(property, binding->value));
  }
  return instances_of(type).find(keys);
}

Instance* Namespace::find_instance(const Class& type, const InstanceName& name) {
  return const_cast<Instance*>(std::as_const(*this).find_instance(type, name));
}

void Namespace::remove_instance(const Instance& instance) {
  instances_[instance.type].remove(canonical_keys(instance));
}

bool Namespace::is_same(const Property& property, const Value& left, const Value& right) const {
  return left.content.index() == right.content.index() &&
         canonical(property, left) == canonical(property, right);
}

std::string Namespace::canonical_keys(const Instance& instance) const {
  std::string keys;
  for (const std::size_t position : instance.type->keys) {
    const Property& property = instance.type->properties[position];
    const ValuePtr& value = instance.values[position];
    if (!value || value->is_null()) {
      throw DeclarationError("an instance of " + instance.type->name +
                             " has no value for its key " + property.name);
    }
    append_field(keys, canonical(property, *value));
  }
  return keys;
}

std::string Namespace::canonical(const Property& property, const Value& value) const {
  if (const ReferencePtr* reference = value.reference()) return canonical(**reference);
  if (const std::string* text = value.text()) return normalised(property.type, *text);
  std::string result;
  if (const TextArray* array = value.array()) {
    for (const auto& each : *array) {
      append_field(result, each ? '=' + normalised(property.type, *each) : std::string());
    }
  }
  return result;
}

// A reference without a namespace points into this one; the host is not compared, since every
// reference here means this server.
std::string Namespace::canonical(const Reference& reference) const {
  std::vector<std::pair<std::string, std::string>> keys;
  for (const KeyBinding& each : reference.target.keys) {
    const ReferencePtr* nested = each.value.reference();
    const std::string* text = each.value.text();
    keys.emplace_back(folded(each.name), nested != nullptr ? canonical(**nested)
                                         : text != nullptr ? *text
                                                           : std::string());
  }
  std::sort(keys.begin(), keys.end());
  std::string result;
  append_field(result, folded(reference.name_space.empty() ? name_ : reference.name_space));
  append_field(result, folded(reference.target.class_name));
  for (const auto& [name, value] : keys) {
    append_field(result, name);
    append_field(result, value);
  }
  return result;
}

std::vector<const Class*> with_subclasses(const Namespace& name_space, const Class& type) {
  std::vector<const Class*> result = name_space.subclasses(&type, true);
  result.insert(result.begin(), &type);
  return result;
}

bool is_a(const Namespace& name_space, const Class& type, std::string_view class_name) {
  const Class* other = name_space.find_class(class_name);
  return other != nullptr && type.is_a(*other);
}

const Namespace* Repository::find(std::string_view name) const {
  const auto found = namespaces_.find(folded(name));
  return found == namespaces_.end() ? nullptr : found->second.get();
}

Namespace* Repository::find(std::string_view name) {
  const auto found = namespaces_.find(folded(name));
  return found == namespaces_.end() ? nullptr : found->second.get();
}

Namespace& Repository::obtain(std::string_view name) {
  auto& place = namespaces_[folded(name)];
  if (!place) place = std::make_unique<Namespace>(std::string(name));
  return *place;
}

}  // namespace simulator
