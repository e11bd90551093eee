#pragma once

#include <string>
#include <vector>

#include "zuCIM/element.h"

// A message of the plain parser, with the trace level it belongs to.
struct PlainMessage {
  unsigned level;
  std::string text;
  bool operator==(const PlainMessage&) const = default;
};

// A plain and slow parser, written down step by step, that judges the real one: it cuts a copy of
// the text into pieces, searches the end tag of each element in its whole content, and descends by
// recursion. Fills `root` and `messages` and returns the status. Only for texts of modest depth.
unsigned plain_parse(const std::string& text, zuCIM::CIMelement& root,
                     std::vector<PlainMessage>& messages);

// Where two chains differ, in words; empty when they are the same: kinds, parents (by position),
// values and attributes. Compares at most what both hold, without recursion.
std::string tree_difference(const zuCIM::CIMelement& left, const zuCIM::CIMelement& right);
