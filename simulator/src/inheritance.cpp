#include "inheritance.h"

#include <algorithm>
#include <utility>

#include "names.h"
#include "repository.h"

namespace simulator {

namespace {

// Qualifiers that are handed down come first, in their order; one that is declared again takes
// the place of the inherited one.
std::vector<Qualifier> merged(const std::vector<Qualifier>& inherited,
                              std::vector<Qualifier> declared) {
  std::vector<Qualifier> result;
  for (const Qualifier& each : inherited) {
    if (!each.to_subclass || find_qualifier(declared, each.name) != nullptr) continue;
    result.push_back(each);
    result.back().propagated = true;
  }
  for (Qualifier& each : declared) result.push_back(std::move(each));
  return result;
}

template <typename Member>
auto find_member(std::vector<Member>& members, const std::string& name) {
  return std::find_if(members.begin(), members.end(),
                      [&](const Member& each) { return same_name(each.name, name); });
}

void check_override(const Class& type, const Property& inherited, const Property& declared) {
  if (inherited.type == declared.type && inherited.shape == declared.shape) return;
  throw DeclarationError(type.name + "." + declared.name + " overrides " + inherited.class_origin +
                         "." + inherited.name + " with another type");
}

// Puts what a class declares over what it inherits, keeping the inherited order.
template <typename Member, typename Check>
std::vector<Member> merge_members(const Class& type, const std::vector<Member>& inherited,
                                  std::vector<Member> declared, Check check) {
  std::vector<Member> result = inherited;
  for (Member& each : result) {
    each.propagated = true;
    each.qualifiers = merged(each.qualifiers, {});
  }
  for (Member& each : declared) {
    const auto overridden = find_member(result, each.name);
    if (overridden == result.end()) {
      each.class_origin = type.name;
      result.push_back(std::move(each));
      continue;
    }
    check(*overridden, each);
    each.class_origin = overridden->class_origin;
    each.qualifiers = merged(overridden->qualifiers, std::move(each.qualifiers));
    *overridden = std::move(each);
  }
  return result;
}

void index_properties(Class& type) {
  for (std::size_t i = 0; i < type.properties.size(); ++i) {
    const Property& property = type.properties[i];
    if (!type.property_index.emplace(folded(property.name), i).second) {
      throw DeclarationError(type.name + " declares " + property.name + " twice");
    }
    if (has_qualifier(property.qualifiers, "Key")) type.keys.push_back(i);
  }
}

}  // namespace

void inherit(Class& declared, const Class* superclass) {
  static const Class nothing;
  const Class& base = superclass == nullptr ? nothing : *superclass;
  declared.superclass = superclass;
  declared.qualifiers = merged(base.qualifiers, std::move(declared.qualifiers));
  declared.properties = merge_members(declared, base.properties, std::move(declared.properties),
                                      [&](const Property& inherited, const Property& own) {
                                        check_override(declared, inherited, own);
                                      });
  declared.methods = merge_members(declared, base.methods, std::move(declared.methods),
                                   [](const Method&, const Method&) {});
  index_properties(declared);
}

}  // namespace simulator
