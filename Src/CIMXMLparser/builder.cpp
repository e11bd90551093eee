#include "CIMXMLparser/builder.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "BRQ/Trace.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::codec {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

}  // namespace

CIMelement* TreeBuilder::add(int id, CIMelement* parent) {
  CIMelement* node = &root_;
  if (root_.name != nullptr) {
    node = memory_.make_node();
    if (node == nullptr) {
      BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, "Src/CIMclasses",
                "makeNextElement: Exception raised: cannot alloc memory!");
      BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
                "parseXMLbuffer: MakeNextElement = NULL!!");
      return nullptr;
    }
    last_->next = node;
    node->parent = parent;
    last_ = node;
  }
  node->name = known_cim_elements[id];
  return node;
}

bool TreeBuilder::add_attribute(CIMelement& node, int id, std::string_view text) {
  terminated_.assign(text);
  if (node.attr_put(id, terminated_.c_str()) == status::success) return true;
  BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
            "parseXMLbuffer: bad Attribute!");
  return false;
}

bool TreeBuilder::add_attributes(CIMelement& node, std::span<const AttributeText> attributes) {
  if (attributes.empty() || memory_.set_attributes(node, attributes)) return true;
  for (const AttributeText& attribute : attributes)
    if (!add_attribute(node, attribute.id, attribute.text)) return false;
  node.attributes->FreeUnused();
  return true;
}

void TreeBuilder::set_value(CIMelement& node, std::string_view text) {
  node.value = static_cast<char*>(std::malloc(text.size() + 1));
  if (node.value == nullptr) throw std::bad_alloc();
  std::memcpy(node.value, text.data(), text.size());
  node.value[text.size()] = '\0';
}

}  // namespace zuCIM::codec
