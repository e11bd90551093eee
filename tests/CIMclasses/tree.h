#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "support/trace_recorder.h"
#include "zuCIM/element.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM::testing {

// One node of a document to build. The depth of the first node is 0; each other node is a child of
// the nearest node before it that lies one level higher.
struct Node {
  int depth;
  int kind;
  const char* name = nullptr;   // the NAME attribute, unless null
  const char* value = nullptr;  // the character data, unless null
};

// Builds a document and returns its root, which the caller frees with delete.
CIMelement* build(std::initializer_list<Node> nodes);

// All nodes of a chain, in order.
std::vector<CIMelement*> nodes_of(CIMelement* head);
// One word per node: its kind, with the NAME attribute and the value where there are some, as in
// "PROPERTY(Id)" and "VALUE=7".
std::vector<std::string> words_of(const CIMelement* head);
// For each node the position of its parent in the chain; -1 for none, -2 for one elsewhere.
std::vector<int> parents_of(CIMelement* head);

// A pointer to no object, which no optimiser can see through.
template <class T>
T* nobody() {
  T* volatile none = nullptr;
  return none;
}

// The texts of the trace lines that have the error level, the source of this unit and a line.
std::vector<std::string> errors(const TraceRecorder& trace);

}  // namespace zuCIM::testing
