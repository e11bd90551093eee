#include "growth.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "names.h"
#include "value_check.h"

namespace simulator {

namespace {

// Keys that say where an instance belongs rather than which one it is.
constexpr std::array<std::string_view, 5> context_keys{
    "CreationClassName", "SystemCreationClassName", "CSCreationClassName", "SystemName", "CSName"};

// Texts that differ from one device to the next in a real inventory.
constexpr std::array<std::string_view, 2> individual_texts{"ElementName", "SerialNumber"};

// Enough digits that generated names sort as they were made.
std::string numbered(const std::string& text, std::string_view separator, std::size_t number) {
  std::array<char, 24> digits{};
  std::snprintf(digits.data(), digits.size(), "%06zu", number);
  return text + std::string(separator) + digits.data();
}

bool tells_apart(const Property& key) {
  if (key.shape != Shape::scalar || key.type == "boolean" || key.type == "datetime") return false;
  for (const std::string_view each : context_keys) {
    if (same_name(key.name, each)) return false;
  }
  return true;
}

std::size_t distinguishing_key(const Class& type) {
  std::optional<std::size_t> result;
  for (const std::size_t key : type.keys) {
    if (tells_apart(type.properties[key])) result = key;
  }
  if (!result)
    throw DeclarationError(type.name + " has no key that generated instances could vary");
  return *result;
}

// An instance to take after, with its values at the positions of the class to grow.
struct Model {
  std::vector<ValuePtr> values;
};

std::vector<Model> models_of(const Namespace& name_space, const Class& type) {
  std::vector<const Class*> classes = name_space.subclasses(&type, true);
  classes.insert(classes.begin(), &type);
  std::vector<Model> models;
  for (const Class* each : classes) {
    for (const auto& instance : name_space.instances_of(*each).list()) {
      Model model;
      for (const Property& property : type.properties) {
        model.values.push_back(instance->values[*each->find_property(property.name)]);
      }
      models.push_back(std::move(model));
    }
  }
  return models;
}

ValuePtr text_value(std::string text) {
  return std::make_shared<Value>(Value{std::move(text)});
}

// A reading within 5 % of the model's, the same at each start.
ValuePtr varied_reading(const std::string& reading, std::size_t number) {
  std::int64_t base = 0;
  std::from_chars(reading.data(), reading.data() + reading.size(), base);
  const auto step = static_cast<std::int64_t>(number * 7919 % 101) - 50;
  return text_value(std::to_string(base + base * step / 1000));
}

// A locally administered address.
ValuePtr hardware_address(std::size_t number) {
  std::array<char, 24> address{};
  std::snprintf(address.data(), address.size(), "0250%08zX", number & 0xFFFFFFFFU);
  return text_value(address.data());
}

class Generator {
 public:
  explicit Generator(const Class& type) : type_(type), key_(distinguishing_key(type)) {}

  std::unique_ptr<Instance> make(const Model& model, std::size_t number) const {
    auto instance = std::make_unique<Instance>();
    instance->type = &type_;
    instance->values = model.values;
    for (std::size_t i = 0; i < type_.properties.size(); ++i) {
      ValuePtr& value = instance->values[i];
      const std::string* text = value ? value->text() : nullptr;
      if (text != nullptr) individualise(type_.properties[i], *text, number, value);
    }
    instance->values[key_] = key_value(model, number);
    return instance;
  }

 private:
  ValuePtr key_value(const Model& model, std::size_t number) const {
    const Property& key = type_.properties[key_];
    if (!is_numeric(key.type))
      return text_value(numbered(*model.values[key_]->text(), "-", number));
    std::string digits = std::to_string(1'000'000 + number);
    if (is_value_of(key.type, digits)) return text_value(std::move(digits));
    throw DeclarationError(type_.name + "." + key.name + " is too narrow for generated instances");
  }

  void individualise(const Property& property, const std::string& text, std::size_t number,
                     ValuePtr& value) const {
    if (same_name(property.name, "CreationClassName")) {
      if (text != type_.name) value = text_value(type_.name);
    } else if (same_name(property.name, "CurrentReading")) {
      value = varied_reading(text, number);
    } else if (same_name(property.name, "PermanentAddress")) {
      value = hardware_address(number);
    }
    for (const std::string_view each : individual_texts) {
      if (same_name(property.name, each)) value = text_value(numbered(text, " ", number));
    }
  }

  const Class& type_;
  std::size_t key_;
};

}  // namespace

void grow(Repository& repository, const std::string& class_name, std::size_t count) {
  for (const auto& [key, name_space] : repository.namespaces()) {
    const Class* type = name_space->find_class(class_name);
    if (type == nullptr) continue;
    const std::vector<Model> models = models_of(*name_space, *type);
    if (models.empty()) continue;
    const Generator generator(*type);
    name_space->reserve_instances(*type, name_space->instances_of(*type).list().size() + count);
    for (std::size_t i = 1; i <= count; ++i) {
      name_space->add_instance(generator.make(models[i % models.size()], i));
    }
    return;
  }
  throw DeclarationError("there is no instance of " + class_name + " to take after");
}

}  // namespace simulator
