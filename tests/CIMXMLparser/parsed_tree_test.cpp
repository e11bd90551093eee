#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zuCIM.h"

// Nodes of a parsed document lie side by side in memory. That must not show: each may be changed,
// moved and freed alone, by a thread of its own, whatever becomes of the others.
namespace {

using zuCIM::CIMarray;
using zuCIM::CIMelement;
namespace elem = zuCIM::elem;
namespace attr = zuCIM::attr;

std::string document(int names) {
  std::string text = "<?xml version=\"1.0\" ?><CIM CIMVERSION=\"2.0\"><IRETURNVALUE>";
  for (int i = 0; i < names; ++i)
    text += "<INSTANCENAME CLASSNAME=\"A" + std::to_string(i) +
            "\"><KEYBINDING NAME=\"k\"><KEYVALUE VALUETYPE=\"string\">v" + std::to_string(i) +
            "</KEYVALUE></KEYBINDING></INSTANCENAME>";
  return text + "</IRETURNVALUE></CIM>";
}

struct Parsed {
  explicit Parsed(int names = 3) { EXPECT_EQ(root.ParseCIMXML(document(names)), 0U); }
  CIMelement* name(int n) { return root.findelement(elem::INSTANCENAME, n); }
  CIMelement root;
};

TEST(ParsedTree, ANodeTakesMoreAttributes) {
  Parsed parsed;
  CIMelement* const name = parsed.name(1);
  EXPECT_EQ(name->attr_put(attr::NAME, "second"), 0);
  EXPECT_EQ(name->attr_put(attr::TYPE, "third"), 0);
  EXPECT_EQ(name->attributes->maxargc, 17U);
  EXPECT_STREQ(name->attr_find(attr::CLASSNAME), "A1");
  EXPECT_STREQ(name->attr_find(attr::NAME), "second");
  EXPECT_STREQ(parsed.name(0)->attr_find(attr::CLASSNAME), "A0");
}

TEST(ParsedTree, ANodeLosesAttributes) {
  Parsed parsed;
  CIMarray& attributes = *parsed.name(0)->attributes;
  attributes.erase(0);
  EXPECT_EQ(attributes.argc, 0U);
  EXPECT_EQ(attributes.elementSize, -2);
  EXPECT_EQ(parsed.name(0)->attr_put(attr::NAME, "new"), 0);
  CIMarray& others = *parsed.name(1)->attributes;
  EXPECT_EQ(others.setmaxargc(0), 0);
  EXPECT_EQ(others.elementSize, 0);
  EXPECT_EQ(others.argv, nullptr);
  others.FreeUnused();
  EXPECT_EQ(parsed.name(1)->attr_put(attr::NAME, "new"), 0);
  EXPECT_STREQ(parsed.name(1)->attr_find(attr::NAME), "new");
}

TEST(ParsedTree, AttributesAreCopiedAndAssigned) {
  Parsed parsed;
  CIMarray copy(*parsed.name(2)->attributes);
  *parsed.name(0)->attributes = copy;
  EXPECT_STREQ(parsed.name(0)->attr_find(attr::CLASSNAME), "A2");
  *parsed.name(1)->attributes = *parsed.name(2)->attributes;
  parsed.root.eclean();
  EXPECT_STREQ(static_cast<char*>(copy.argv[0]) + 1, "A2");
}

TEST(ParsedTree, ANodeGetsAnotherValue) {
  Parsed parsed;
  CIMelement* const value = parsed.name(1)->findelement(elem::KEYVALUE, 0);
  std::free(value->value);
  value->value = strdup("another text");
  EXPECT_STREQ(parsed.name(1)->getValueOf(elem::KEYBINDING, "k"), "another text");
}

TEST(ParsedTree, NodesExchangeWhatTheyHold) {
  Parsed parsed;
  CIMelement made;
  made.value = std::exchange(parsed.name(0)->findelement(elem::KEYVALUE, 0)->value, nullptr);
  std::swap(made.attributes, parsed.name(1)->attributes);
  EXPECT_STREQ(made.value, "v0");
  EXPECT_STREQ(made.attr_find(attr::CLASSNAME), "A1");
  EXPECT_EQ(made.attr_put(attr::NAME, "n"), 0);
}

TEST(ParsedTree, AttributesOutliveTheirDocument) {
  CIMelement made;
  {
    Parsed parsed;
    made.attributes = std::exchange(parsed.name(1)->attributes, nullptr);
  }
  EXPECT_STREQ(made.attr_find(attr::CLASSNAME), "A1");
  EXPECT_EQ(made.attr_put(attr::NAME, "n"), 0);
  EXPECT_STREQ(made.attr_find(attr::CLASSNAME), "A1");
}

TEST(ParsedTree, AttributesAreDeletedAlone) {
  Parsed parsed;
  delete std::exchange(parsed.name(0)->attributes, nullptr);
  EXPECT_EQ(parsed.name(1)->attr_put(attr::NAME, "n"), 0);
  delete std::exchange(parsed.name(1)->attributes, nullptr);
  EXPECT_EQ(parsed.name(0)->attr_find(attr::CLASSNAME), nullptr);
  EXPECT_EQ(parsed.name(0)->attr_put(attr::NAME, "new"), 0);
  EXPECT_STREQ(parsed.name(0)->attr_find(attr::NAME), "new");
  EXPECT_STREQ(parsed.name(2)->attr_find(attr::CLASSNAME), "A2");
}

struct Named : CIMelement {
  explicit Named(bool& is_gone) : is_gone_(is_gone) {}
  ~Named() { is_gone_ = true; }
  bool& is_gone_;
};

TEST(ParsedTree, ClassesMayDeriveFromANode) {
  bool is_gone = false;
  Named* const named = new Named(is_gone);
  EXPECT_EQ(named->ParseCIMXML(document(2)), 0U);
  delete named;
  EXPECT_TRUE(is_gone);
}

struct NamedArray : CIMarray {
  explicit NamedArray(bool& is_gone) : is_gone_(is_gone) {}
  ~NamedArray() { is_gone_ = true; }
  bool& is_gone_;
};

TEST(ParsedTree, ClassesMayDeriveFromAnArray) {
  Parsed parsed;
  bool is_gone = false;
  NamedArray* const named = new NamedArray(is_gone);
  *static_cast<CIMarray*>(named) = *parsed.name(0)->attributes;
  EXPECT_EQ(named->argc, 1U);
  delete named;
  EXPECT_TRUE(is_gone);
}

TEST(ParsedTree, APartOutlivesTheRest) {
  CIMelement* kept = nullptr;
  {
    Parsed parsed(2000);
    parsed.name(1000)->redirect_chain(&kept, true);
    EXPECT_EQ(parsed.name(1000)->attr_find_exact(attr::CLASSNAME, "A1001"), 0);
  }
  EXPECT_STREQ(kept->attr_find(attr::CLASSNAME), "A1000");
  EXPECT_STREQ(kept->getValueOf(elem::KEYBINDING, "k"), "v1000");
  delete kept;
}

TEST(ParsedTree, NodesAreDeletedOneByOne) {
  Parsed parsed(500);
  for (int i = 0; i < 499; ++i) EXPECT_NE(parsed.name(0)->deleteElement(true), nullptr);
  EXPECT_STREQ(parsed.name(0)->attr_find(attr::CLASSNAME), "A499");
  EXPECT_EQ(parsed.name(1), nullptr);
}

TEST(ParsedTree, ItGrowsByNodesMadeByHand) {
  Parsed parsed;
  CIMelement* const made = parsed.name(2)->makeNextElement();
  made->name = zuCIM::known_cim_elements[elem::VALUE];
  made->value = strdup("made by hand");
  EXPECT_EQ(made->attr_put(attr::NAME, "n"), 0);
  CIMelement copy(parsed.root);
  EXPECT_STREQ(copy.getLastElement()->value, "made by hand");
}

TEST(ParsedTree, ANodeIsAssignedTo) {
  Parsed parsed;
  CIMelement other;
  ASSERT_EQ(other.ParseCIMXML(document(1)), 0U);
  CIMelement* const name = parsed.name(1);
  *name = other;
  EXPECT_EQ(name->name, zuCIM::known_cim_elements[elem::CIM]);
  EXPECT_STREQ(name->attr_find(attr::CIMVERSION), "2.0");
}

TEST(ParsedTree, ThreadsFreePartsOfOneDocument) {
  constexpr int parts = 400;
  std::vector<CIMelement*> chains(4);
  {
    Parsed parsed(parts);
    for (int i = 0; i < parts; ++i)
      parsed.name(0)->redirect_chain(&chains[static_cast<std::size_t>(i) % chains.size()], true);
  }
  std::vector<std::thread> threads;
  for (CIMelement* chain : chains)
    threads.emplace_back([chain] {
      chain->attr_put(attr::NAME, "mine");
      delete chain;
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(ParsedTree, LongAndShortTextsAreKeptWhole) {
  for (std::size_t length = 0; length < 100; ++length) {
    const std::string text(length, 'x');
    CIMelement root;
    ASSERT_EQ(root.ParseCIMXML("<?xml version=\"1.0\" ?><CIM A=\"\"><VALUE NAME=\"" + text +
                               "\">y" + text + "</VALUE></CIM>"),
              0U);
    EXPECT_EQ(root.next->attr_find(attr::NAME), text);
    EXPECT_EQ(root.next->value, "y" + text);
  }
}

}  // namespace
