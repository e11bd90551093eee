#pragma once

#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "model.h"

namespace simulator {

// Something is wrong with a declaration: an unknown superclass, a key without a value, ...
class DeclarationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The instances of exactly one class, in the order in which they were added.
class InstanceSet {
 public:
  using List = std::vector<std::unique_ptr<Instance>>;

  const List& list() const { return instances_; }

  // The instance with these keys (see Namespace::canonical_keys), or null.
  const Instance* find(const std::string& keys) const;

  // Forgets the instance with these keys; the others keep their order.
  void remove(const std::string& keys);

  // Takes the instance, unless there is one with the same keys: then false.
  bool add(std::unique_ptr<Instance> instance, const std::string& keys);

  void reserve(std::size_t count);

 private:
  List instances_;
  std::unordered_map<std::string, const Instance*> by_keys_;
};

// The classes and instances of one namespace.
class Namespace {
 public:
  explicit Namespace(std::string name) : name_(std::move(name)) {}

  const std::string& name() const { return name_; }

  // The class of that name, or null.
  const Class* find_class(std::string_view class_name) const;

  // All classes, superclasses before their subclasses.
  const std::vector<std::unique_ptr<Class>>& classes() const { return classes_; }

  // The subclasses of `base`, all of them or only the direct ones; with null the classes without
  // a superclass and, if deep, everything below them.
  std::vector<const Class*> subclasses(const Class* base, bool deep) const;

  // Adds a class that holds only what its own declaration says; what it inherits is filled in.
  const Class& add_class(std::unique_ptr<Class> declared);

  // Forgets a class that has neither subclasses nor instances.
  void remove_class(const Class& type);

  // Puts another declaration in the place of a class that has neither subclasses nor instances.
  // Where the declaration cannot be taken the class stays as it is.
  void replace_class(const Class& type, std::unique_ptr<Class> declared);

  // The instances of exactly this class.
  const InstanceSet& instances_of(const Class& type) const;

  // Adds an instance whose values are complete, with keys that no other has.
  // Throws DeclarationError.
  void add_instance(std::unique_ptr<Instance> instance);

  void reserve_instances(const Class& type, std::size_t count);

  // The instance that a path names, or null. A path whose bindings are not exactly the keys of
  // the class is refused with CimError.
  const Instance* find_instance(const Class& type, const InstanceName& name) const;
  Instance* find_instance(const Class& type, const InstanceName& name);

  // Forgets an instance of this namespace.
  void remove_instance(const Instance& instance);

  // Whether two values of a property mean the same.
  bool is_same(const Property& property, const Value& left, const Value& right) const;

 private:
  // The superclass that a declaration names; null if it names none.
  Class* superclass_of(const Class& declared) const;

  std::string canonical_keys(const Instance& instance) const;
  std::string canonical(const Property& property, const Value& value) const;
  std::string canonical(const Reference& reference) const;

  std::string name_;
  std::vector<std::unique_ptr<Class>> classes_;
  std::unordered_map<std::string, Class*> by_name_;
  std::unordered_map<const Class*, InstanceSet> instances_;
};

// The class and all its subclasses.
std::vector<const Class*> with_subclasses(const Namespace& name_space, const Class& type);

// Whether a class is the one of that name or inherits from it; false where the namespace has none
// of that name.
bool is_a(const Namespace& name_space, const Class& type, std::string_view class_name);

// All namespaces of the server.
class Repository {
 public:
  // The namespace of that name, or null.
  const Namespace* find(std::string_view name) const;
  Namespace* find(std::string_view name);

  // The namespace of that name, made if there is none.
  Namespace& obtain(std::string_view name);

  const std::map<std::string, std::unique_ptr<Namespace>>& namespaces() const {
    return namespaces_;
  }

 private:
  std::map<std::string, std::unique_ptr<Namespace>> namespaces_;
};

}  // namespace simulator
