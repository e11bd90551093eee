#pragma once

#include <cstddef>
#include <new>
#include <string>

#include "zuCIM/array.h"
#include "zuCIM/export.h"

namespace zuCIM {

// One node of a CIM-XML document. A document is one chain of nodes in document order, in which each
// node also points to its parent; the descendants of a node are the run of nodes that follows it.
//
// Ownership: the first node belongs to whoever made it, every other node to the chain; a node owns
// its value text and its attributes. Most members answer a null `this` with 0, null or 1001.
// Thread rule: a chain is used by one thread at a time.
class ZUCIM_API CIMelement {
 public:
  // The row of known_cim_elements for this element; null in an empty node.
  const char* name = nullptr;
  // The enclosing element; null for the first node of a document.
  CIMelement* parent = nullptr;
  // The character data, allocated with malloc; or null.
  char* value = nullptr;
  // The attributes in the order they were added, made on the first attribute. Each record is one
  // byte, the attribute id plus one, and the value as NUL-terminated text.
  CIMarray* attributes = nullptr;
  // The next node in document order.
  CIMelement* next = nullptr;

  // Makes an empty node.
  CIMelement() noexcept = default;
  // Copies the chain that starts at `source`.
  CIMelement(const CIMelement& source) noexcept;
  // Empties the node and frees every node after it.
  ~CIMelement();
  // Nodes are made with new, and by ParseCIMXML; all are freed with delete.
  static void* operator new(std::size_t size);
  static void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept;
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void* node, std::size_t size) noexcept;
  // Replaces the chain by a deep copy of the one that starts at `source`. When memory is short the
  // copy ends early.
  CIMelement& operator=(const CIMelement& source) noexcept;

  // Returns the node to fill for the next child of this one: this node itself while it is empty,
  // else a new node at the chain's end whose parent is this one. Null when memory is short or
  // `this` is null.
  CIMelement* makeNextElement() noexcept;
  // Appends an attribute (`attribute` is its id) with a copy of `text`. Returns 0, or 1001 when
  // `text` or `this` is null or memory is short.
  int attr_put(int attribute, const char* text) noexcept;

  // Returns the id of the attribute at `index` and stores its text, owned by the node, in `*text`
  // unless `text` is null. Without such an attribute: 33 and the text "?".
  int attr_get(unsigned index, char** text) noexcept;
  // The text of the first attribute with this id, owned by the node; null without one.
  char* attr_find(int attribute) noexcept;
  // 0 when the first attribute with this id has this text, ignoring case; else 1001. An empty text
  // never matches.
  int attr_find_exact(int attribute, const char* text) noexcept;

  // The last node of this node's subtree; itself without descendants, null for a null `this`.
  CIMelement* getLastElement() noexcept;
  // The `n`-th element (from 0) of kind `element` from here to the chain's end; elements inside an
  // earlier match do not count. Null without one.
  CIMelement* findelement(int element, int n) noexcept;
  // The first element of kind `element` in this subtree whose NAME is `text`, ignoring case.
  CIMelement* search_elem(int element, const char* text) noexcept;
  // The text of the VALUE (for a KEYBINDING also the KEYVALUE) that directly follows the element
  // that search_elem finds; owned by the tree. Null without one.
  char* getValueOf(int element, const char* text) noexcept;
  // The first INSTANCENAME from here on whose key `key_name` has the value `key_value`, ignoring
  // case.
  CIMelement* findInstanceName(const char* key_name, const char* key_value) noexcept;
  // The first property of any form named `text`, ignoring case, from here to the chain's end.
  CIMelement* findProperty(const char* text) noexcept;
  // The text of the VALUE that directly follows the property `text`; owned by the tree. Null for an
  // array, a property without value or no such property.
  char* getValueOfProperty(const char* text) noexcept;

  // Unlinks and frees this node, with its subtree if asked. Returns the node that preceded it; null
  // when it had no parent. Use false only for a node without descendants. Not for a node that is a
  // variable or a member of something, such as the root of an answer.
  CIMelement* deleteElement(bool with_subtree) noexcept;
  // Moves this node out of its document to the end of the chain whose head pointer is `*chain`,
  // with its subtree or (false) freeing its descendants. Returns the node that followed the moved
  // run.
  CIMelement* redirect_chain(CIMelement** chain, bool with_subtree) noexcept;
  // Empties this node and frees every node after it in its chain.
  void eclean() noexcept;

  // Replaces the chain by the document in `text`. Returns 0, or 1001 when the text is no complete
  // CIM-XML document; then the chain holds what was built before the error.
  unsigned ParseCIMXML(const std::string& text) noexcept;
  // Appends this subtree to `out` as CIM-XML; a CIM element replaces `out` and starts with the XML
  // declaration. Texts are written as they are, without escaping. Returns 0 or 1001.
  unsigned GenerateCIMXML(std::string& out) noexcept;

 private:
  friend class NodeMemory;

  // The memory that this node lies in, with other nodes of the document it was parsed from.
  TreeChunk* chunk_ = nullptr;
};

}  // namespace zuCIM
