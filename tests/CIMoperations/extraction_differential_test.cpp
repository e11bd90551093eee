#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "CIMoperations/extraction_judge.h"
#include "CIMoperations/tree_text.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

// Makes the text of answers that are partly as they should be and partly not.
class AnswerMaker {
 public:
  explicit AnswerMaker(unsigned seed) : random_(seed) {}

  std::string make() {
    text_ = "CIM\n";
    left_ = 2 + static_cast<int>(pick(60));
    strangeness_ = pick(3) * 8;
    while (left_ > 0) add_element(elem::CIM, 1);
    return text_;
  }

 private:
  unsigned pick(unsigned below) { return static_cast<unsigned>(random_() % below); }

  static std::vector<int> children_of(int kind) {
    switch (kind) {
      case elem::CIM:
        return {elem::MESSAGE};
      case elem::MESSAGE:
        return {elem::SIMPLERSP, elem::MULTIRSP};
      case elem::MULTIRSP:
        return {elem::SIMPLERSP};
      case elem::SIMPLERSP:
        return {elem::IMETHODRESPONSE};
      case elem::IMETHODRESPONSE:
        return {elem::IRETURNVALUE};
      case elem::IRETURNVALUE:
        return {elem::CLASS, elem::INSTANCENAME, elem::INSTANCE, elem::VALUE_NAMEDINSTANCE};
      case elem::VALUE_NAMEDINSTANCE:
        return {elem::INSTANCENAME, elem::INSTANCE};
      case elem::CLASS:
        return {elem::QUALIFIER,          elem::PROPERTY, elem::PROPERTY_ARRAY,
                elem::PROPERTY_REFERENCE, elem::METHOD,   elem::METHOD};
      case elem::PROPERTY:
      case elem::PROPERTY_ARRAY:
      case elem::PROPERTY_REFERENCE:
        return {elem::QUALIFIER, elem::VALUE};
      case elem::METHOD:
        return {elem::QUALIFIER, elem::PARAMETER, elem::PARAMETER_ARRAY, elem::PARAMETER_REFERENCE,
                elem::PARAMETER_REFARRAY};
      case elem::INSTANCE:
        return {elem::PROPERTY};
      case elem::INSTANCENAME:
        return {elem::KEYBINDING};
      case elem::KEYBINDING:
        return {elem::KEYVALUE, elem::VALUE_REFERENCE};
      case elem::VALUE_REFERENCE:
        return {elem::INSTANCENAME};
      default:
        return {elem::QUALIFIER, elem::VALUE};
    }
  }

  int child_of(int kind) {
    static const std::vector<int> strange = {
        elem::IRETURNVALUE, elem::CLASS,  elem::VALUE_NAMEDINSTANCE, elem::INSTANCENAME,
        elem::INSTANCE,     elem::METHOD, elem::PARAMETER,           elem::PROPERTY,
        elem::VALUE,        elem::ERROR,  elem::SIMPLERSP,           elem::PARAMVALUE};
    const std::vector<int>& choice =
        pick(100) < strangeness_ ? strange : (usual_ = children_of(kind));
    return choice[pick(static_cast<unsigned>(choice.size()))];
  }

  void write_line(int kind, unsigned depth) {
    static const char* const names[] = {"A", "a", "Key", "KEY", "p"};
    text_ += std::string(depth, ' ') + known_cim_elements[kind];
    const bool named = kind == elem::CLASS ? pick(10) > 0 : pick(2) > 0;
    if (named) text_ += std::string(" NAME=") + names[kind == elem::CLASS ? pick(2) : pick(5)];
    if (pick(6) == 0) text_ += " [v]";
    text_ += "\n";
  }

  void add_element(int parent, unsigned depth) {
    const int kind = child_of(parent);
    write_line(kind, depth);
    --left_;
    if (kind == elem::VALUE_NAMEDINSTANCE && pick(100) >= strangeness_) {
      add_wanted(elem::INSTANCENAME, depth + 1);
      add_wanted(elem::INSTANCE, depth + 1);
      return;
    }
    const unsigned wanted = depth < 6 ? 1 + pick(4) : pick(3);
    for (unsigned i = 0; i < wanted && left_ > 0; ++i) add_element(kind, depth + 1);
  }

  void add_wanted(int kind, unsigned depth) {
    write_line(kind, depth);
    for (unsigned i = pick(3); i > 0; --i) add_element(kind, depth + 1);
  }

  std::mt19937 random_;
  std::string text_;
  std::vector<int> usual_;
  int left_ = 0;
  unsigned strangeness_ = 0;
};

// The judge's side of a comparison.
struct JudgedContext {
  CIMelement answer;
  CIMclass entry;
};

class ExtractionDifferential : public testing::Test {
 protected:
  ExtractionDifferential() {
    container_.host = "h";
    container_.setCurrentClass("A", "");
    judged_.entry.setClassName("A", "root/cimv2");
  }

  void answer(const std::string& text) {
    container_.result.eclean();
    judged_.answer.eclean();
    build_tree(container_.result, text);
    build_tree(judged_.answer, text);
  }

  // `element` is what the real extraction returned.
  void expect_same(const std::string& text, std::intptr_t element, const JudgedExtraction& judged) {
    const CIMclass& entry = container_.classes;
    EXPECT_EQ(tree_text(entry.instanceNames), tree_text(judged_.entry.instanceNames)) << text;
    EXPECT_EQ(tree_text(entry.instances), tree_text(judged_.entry.instances)) << text;
    EXPECT_EQ(tree_text(entry.methods), tree_text(judged_.entry.methods)) << text;
    EXPECT_EQ(tree_text(&container_.result), tree_text(&judged_.answer)) << text;
    EXPECT_EQ(tree_text(reinterpret_cast<const CIMelement*>(element)), tree_text(judged.element))
        << text;
    EXPECT_EQ(recorder_.texts(), judged.traces) << text;
    recorder_.clear();
    moved_ += element != 0 ? 1 : 0;
  }

  CIMcontainer container_;
  JudgedContext judged_;
  TraceRecorder recorder_;
  int moved_ = 0;
};

constexpr unsigned document_count = 1000;

TEST_F(ExtractionDifferential, InstanceNamesAndInstances) {
  for (unsigned seed = 0; seed < document_count && !HasFailure(); ++seed) {
    const std::string text = AnswerMaker(seed).make();
    answer(text);
    expect_same(text, container_.ExtractInstanceNames(&container_.result),
                judge_instance_names(&judged_.answer, judged_.entry, "h"));
    expect_same(text, container_.ExtractInstance(&container_.result),
                judge_instances(&judged_.answer, judged_.entry, "h"));
    // Lists go on growing for a while, so that appending to a filled list is compared too.
    if (seed % 5 != 0) continue;
    container_.classes.kill_element(&container_.classes.instanceNames);
    container_.classes.kill_element(&container_.classes.instances);
    judged_.entry.kill_element(&judged_.entry.instanceNames);
    judged_.entry.kill_element(&judged_.entry.instances);
  }
  EXPECT_GT(moved_, 250);
}

// The n-th element of this kind, inside others too; null without one.
CIMelement* any_element(CIMelement* list, int kind, unsigned n) {
  for (CIMelement* node = list; node != nullptr; node = node->next)
    if (node->name == known_cim_elements[kind] && n-- == 0) return node;
  return nullptr;
}

TEST_F(ExtractionDifferential, ElementsThatAreInTheListAlready) {
  for (unsigned seed = 0; seed < document_count && !HasFailure(); ++seed) {
    const std::string text = AnswerMaker(seed).make();
    answer(text);
    container_.classes.kill_element(&container_.classes.instanceNames);
    judged_.entry.kill_element(&judged_.entry.instanceNames);
    container_.ExtractInstanceNames(&container_.result);
    judge_instance_names(&judged_.answer, judged_.entry, "h");
    recorder_.clear();
    for (unsigned n = 0; n < 5; ++n) {
      CIMelement* const start =
          any_element(container_.classes.instanceNames, elem::INSTANCENAME, n);
      if (start == nullptr) break;
      expect_same(
          text, container_.ExtractInstanceNames(start),
          judge_instance_names(any_element(judged_.entry.instanceNames, elem::INSTANCENAME, n),
                               judged_.entry, "h"));
    }
  }
  EXPECT_GT(moved_, 250);
}

TEST_F(ExtractionDifferential, ClassTemplates) {
  int templates = 0;
  for (unsigned seed = 0; seed < document_count && !HasFailure(); ++seed) {
    const std::string text = AnswerMaker(seed).make();
    answer(text);
    container_.ExtractClassDefinition();
    judge_class_definition(judged_.answer, judged_.entry, "h");
    recorder_.clear();
    if (container_.classes.instances == nullptr) continue;
    ++templates;
    expect_same(text, container_.ExtractInstance(container_.classes.instances),
                judge_instances(judged_.entry.instances, judged_.entry, "h"));
  }
  EXPECT_GT(templates, 75);
}

TEST_F(ExtractionDifferential, NamedInstances) {
  for (unsigned seed = 0; seed < document_count && !HasFailure(); ++seed) {
    const std::string text = AnswerMaker(seed).make();
    answer(text);
    expect_same(text, container_.ExtractNamedInstances(),
                judge_named_instances(judged_.answer, judged_.entry, "h"));
  }
  EXPECT_GT(moved_, 75);
}

TEST_F(ExtractionDifferential, ClassDefinition) {
  int succeeded = 0;
  for (unsigned seed = 0; seed < document_count && !HasFailure(); ++seed) {
    const std::string text = AnswerMaker(seed).make();
    answer(text);
    const int code = container_.ExtractClassDefinition();
    const JudgedExtraction judged = judge_class_definition(judged_.answer, judged_.entry, "h");
    EXPECT_EQ(code, judged.code) << text;
    succeeded += code == 0 && container_.classes.methods != nullptr ? 1 : 0;
    expect_same(text, 0, judged);
  }
  EXPECT_GT(succeeded, 75);
}

}  // namespace
