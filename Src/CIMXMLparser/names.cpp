#include "CIMXMLparser/names.h"

#include <strings.h>

#include <cassert>
#include <cstring>

#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {

NameTable::NameTable(const char* const* names, std::size_t count) {
  ids_.fill(-1);
  for (std::size_t id = 0; id < count; ++id) {
    std::size_t slot = slot_of(names[id]);
    while (ids_[slot] >= 0) slot = (slot + 1) % slot_count;
    names_[slot] = names[id];
    ids_[slot] = static_cast<int>(id);
  }
}

std::size_t NameTable::slot_of(std::string_view name) {
  if (name.empty()) return 0;
  const auto byte = [&](std::size_t i) {
    return static_cast<std::size_t>(static_cast<unsigned char>(name[i]));
  };
  return (name.size() * 31 + byte(0) * 7 + byte(name.size() / 2) * 13 + byte(name.size() - 1)) %
         slot_count;
}

int NameTable::find(std::string_view name) const {
  std::size_t slot = slot_of(name);
  while (ids_[slot] >= 0 && names_[slot] != name) slot = (slot + 1) % slot_count;
  return ids_[slot];
}

NameRow::NameRow(const char* name) : size_(std::strlen(name)) {
  assert(size_ <= sizeof words_);
  std::memcpy(words_.data(), name, size_);
  std::memset(masks_.data(), 0xFF, size_);
}

namespace {

template <std::size_t count>
std::array<NameRow, count> rows_of(const char* const* names) {
  std::array<NameRow, count> rows;
  for (std::size_t id = 0; id < count; ++id) rows[id] = NameRow(names[id]);
  return rows;
}

}  // namespace

const std::array<NameRow, elem::UNKNOWN>& element_names() {
  static const auto rows = rows_of<elem::UNKNOWN>(known_cim_elements);
  return rows;
}

const std::array<NameRow, attr::UNKNOWN>& attribute_names() {
  static const auto rows = rows_of<attr::UNKNOWN>(known_cim_attributes);
  return rows;
}

int find_element(std::string_view name) {
  static const NameTable table(known_cim_elements, elem::UNKNOWN);
  return table.find(name);
}

int find_attribute(std::string_view name) {
  static const NameTable table(known_cim_attributes, attr::UNKNOWN);
  const int id = table.find(name);
  if (id >= 0) return id;
  const std::string_view embedded_object = known_cim_attributes[attr::EMBEDDEDOBJECT];
  const bool equal = name.size() == embedded_object.size() &&
                     strncasecmp(name.data(), embedded_object.data(), name.size()) == 0;
  return equal ? attr::EMBEDDEDOBJECT : attr::UNKNOWN;
}

}  // namespace zuCIM::codec
