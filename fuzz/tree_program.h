#pragma once

#include <array>
#include <memory>
#include <vector>

#include "byte_source.h"
#include "tree_model.h"

// Two chains of elements and their models, and a program that works on both. Every operation is
// compared; a difference aborts. The input: for each step an operation and what it needs.
class TreeProgram {
 public:
  explicit TreeProgram(ByteSource input);
  ~TreeProgram();
  TreeProgram(const TreeProgram&) = delete;
  TreeProgram& operator=(const TreeProgram&) = delete;

  // Runs all steps.
  void run();

 private:
  // A chain with its model. The head was made with new.
  struct Pair {
    zuCIM::CIMelement* head = nullptr;
    ModelChain model;

    zuCIM::CIMelement* actual(std::size_t position) const;
    std::size_t position_of(const zuCIM::CIMelement* node) const;
  };

  void step();
  void change(unsigned operation, Pair& pair, std::size_t position);
  void ask(Pair& pair, std::size_t position);
  void add_child(Pair& pair);
  void fill(zuCIM::CIMelement& node, ModelNode& model);
  void add_attribute(Pair& pair, std::size_t position);
  void set_value(Pair& pair, std::size_t position);
  void remove(Pair& pair, std::size_t position, bool with_subtree);
  void move(Pair& from, std::size_t position, Pair& to, bool with_subtree);
  void clean(Pair& pair, std::size_t position);
  void assign(Pair& to, const Pair& from, std::size_t position);
  void write_and_parse(Pair& from, Pair& to);
  void compare_attributes(Pair& pair, std::size_t position);
  void compare() const;
  Pair& other(const Pair& pair) { return &pair == pairs_.data() ? pairs_[1] : pairs_[0]; }

  ByteSource input_;
  std::array<Pair, 2> pairs_;
  bool is_over_ = false;
  // Nodes that left their chains; others may still name them as their parent.
  std::vector<std::shared_ptr<ModelNode>> gone_;
};
