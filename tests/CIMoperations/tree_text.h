#pragma once

#include <string>

#include "zuCIM/element.h"

// Element trees as indented text, one line for each element in document order:
//
//   CIM
//    CLASS NAME=A
//     PROPERTY NAME=p [text]
//
// One blank for each level, then the element's name, its attributes and its value in brackets.

// Fills `root`, an empty element, with the first element of `text`, and appends the others. A text
// that makes no tree ends the program.
void build_tree(zuCIM::CIMelement& root, const std::string& text);

// The chain that starts at `root` as text. An element whose parent is not the latest one of the
// level above is marked: "^" when it has no parent, "@n" when its parent is the n-th element
// (from 0), "?" when its parent is not in the chain.
std::string tree_text(const zuCIM::CIMelement* root);
