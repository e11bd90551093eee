#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CIMoperations/extrinsic_test.h"

// Answers that stay in the response tree, walked as a caller walks them: with the finders alone.
namespace {

using namespace zuCIM;

class ReadableAnswer : public ExtrinsicTest {
 protected:
  CIMelement& answer() { return context_->result; }

  // The first attribute with this id of every element of a kind.
  std::vector<std::string> all(int element, int attribute) {
    std::vector<std::string> texts;
    for (int n = 0; CIMelement* const found = answer().findelement(element, n); ++n)
      texts.emplace_back(found->attr_find(attribute));
    return texts;
  }

  // The next request takes the answer away.
  void expect_answer_ends_with_the_next_request() {
    without_retries();
    context_->Imethod_EnumerateClassNames(-1);
    EXPECT_EQ(answer().next, nullptr);
  }
};

using Texts = std::vector<std::string>;

TEST_F(ReadableAnswer, OfEnumerateClassesHoldsTheDefinitions) {
  serve({return_value("<CLASS NAME=\"CIM_B\" SUPERCLASS=\"CIM_A\">\n"
                      "<PROPERTY NAME=\"Id\" TYPE=\"string\"></PROPERTY>\n"
                      "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\"><VALUE>7</VALUE></PROPERTY>\n"
                      "<METHOD NAME=\"Start\" TYPE=\"uint32\"></METHOD>\n"
                      "</CLASS>\n"
                      "<CLASS NAME=\"CIM_C\" SUPERCLASS=\"CIM_A\">\n"
                      "</CLASS>\n"),
         "no XML"});
  ASSERT_EQ(context_->Imethod_EnumerateClasses(-1, -1, -1, -1), 0);
  EXPECT_EQ(all(elem::CLASS, attr::NAME), (Texts{"CIM_B", "CIM_C"}));
  EXPECT_EQ(all(elem::CLASS, attr::SUPERCLASS), (Texts{"CIM_A", "CIM_A"}));
  EXPECT_EQ(all(elem::METHOD, attr::NAME), Texts{"Start"});
  CIMelement* const first = answer().findelement(elem::CLASS, 0);
  EXPECT_EQ(first->attr_find_exact(attr::NAME, "cim_b"), 0);
  EXPECT_STREQ(first->getValueOfProperty("speed"), "7");
  EXPECT_EQ(first->getValueOfProperty("Id"), nullptr);
  EXPECT_NE(first->findProperty("Id"), nullptr);
  expect_answer_ends_with_the_next_request();
}

TEST_F(ReadableAnswer, OfEnumerateClassNamesHoldsTheNames) {
  serve({return_value("<CLASSNAME NAME=\"CIM_B\"/>\n<CLASSNAME NAME=\"CIM_C\"/>\n"), "no XML"});
  ASSERT_EQ(context_->Imethod_EnumerateClassNames(1), 0);
  EXPECT_EQ(all(elem::CLASSNAME, attr::NAME), (Texts{"CIM_B", "CIM_C"}));
  EXPECT_NE(answer().search_elem(elem::CLASSNAME, "CIM_C"), nullptr);
  EXPECT_EQ(answer().search_elem(elem::CLASSNAME, "CIM_D"), nullptr);
  expect_answer_ends_with_the_next_request();
}

std::string object(const std::string& id, const std::string& speed) {
  return "<VALUE.OBJECTWITHPATH>\n"
         "<INSTANCEPATH>\n"
         "<NAMESPACEPATH>\n"
         "<HOST>server</HOST>\n"
         "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"/></LOCALNAMESPACEPATH>\n"
         "</NAMESPACEPATH>\n"
         "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
         "<KEYBINDING NAME=\"Id\"><KEYVALUE>" +
         id +
         "</KEYVALUE></KEYBINDING>\n"
         "</INSTANCENAME>\n"
         "</INSTANCEPATH>\n"
         "<INSTANCE CLASSNAME=\"CIM_A\">\n"
         "<PROPERTY NAME=\"Speed\" TYPE=\"uint32\"><VALUE>" +
         speed +
         "</VALUE></PROPERTY>\n"
         "</INSTANCE>\n"
         "</VALUE.OBJECTWITHPATH>\n";
}

TEST_F(ReadableAnswer, OfExecQueryHoldsTheObjects) {
  serve({return_value(object("1", "10") + object("2", "20")), "no XML"});
  ASSERT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_A"), 0);
  Texts speeds;
  Texts keys;
  for (int n = 0; CIMelement* const found = answer().findelement(elem::INSTANCE, n); ++n)
    speeds.emplace_back(found->getValueOfProperty("Speed"));
  for (int n = 0; CIMelement* const found = answer().findelement(elem::INSTANCENAME, n); ++n)
    keys.emplace_back(found->getValueOf(elem::KEYBINDING, "Id"));
  EXPECT_EQ(speeds, (Texts{"10", "20"}));
  EXPECT_EQ(keys, (Texts{"1", "2"}));
  EXPECT_EQ(answer().findInstanceName("Id", "2"), answer().findelement(elem::INSTANCENAME, 1));
  // Nothing was moved into the class entry.
  EXPECT_EQ(entry().instances, nullptr);
  EXPECT_EQ(entry().instanceNames, nullptr);
  expect_answer_ends_with_the_next_request();
}

TEST_F(ReadableAnswer, OfGetPropertyHoldsTheValue) {
  serve({return_value("<VALUE>7</VALUE>\n"), "no XML"});
  ASSERT_EQ(context_->Imethod_GetProperty(&name_, "Speed"), 0);
  EXPECT_STREQ(answer().findelement(elem::VALUE, 0)->value, "7");
  EXPECT_EQ(answer().findelement(elem::VALUE, 1), nullptr);
  expect_answer_ends_with_the_next_request();
}

TEST_F(ReadableAnswer, OfGetPropertyMayHoldAnArray) {
  serve({return_value("<VALUE.ARRAY>\n<VALUE>7</VALUE>\n<VALUE>8</VALUE>\n</VALUE.ARRAY>\n")});
  ASSERT_EQ(context_->Imethod_GetProperty(&name_, "Speeds"), 0);
  EXPECT_NE(answer().findelement(elem::VALUE_ARRAY, 0), nullptr);
  EXPECT_STREQ(answer().findelement(elem::VALUE, 0)->value, "7");
  EXPECT_STREQ(answer().findelement(elem::VALUE, 1)->value, "8");
}

TEST_F(ReadableAnswer, OfAMethodHoldsItsOutParameters) {
  serve({extrinsic_answer("<RETURNVALUE PARAMTYPE=\"uint32\">\n<VALUE>0</VALUE>\n</RETURNVALUE>\n"
                          "<PARAMVALUE NAME=\"Job\" PARAMTYPE=\"reference\">\n"
                          "<VALUE.REFERENCE>\n"
                          "<INSTANCENAME CLASSNAME=\"CIM_Job\">\n"
                          "<KEYBINDING NAME=\"Id\"><KEYVALUE>9</KEYVALUE></KEYBINDING>\n"
                          "</INSTANCENAME>\n"
                          "</VALUE.REFERENCE>\n"
                          "</PARAMVALUE>\n"
                          "<PARAMVALUE NAME=\"Left\" PARAMTYPE=\"uint32\">\n"
                          "<VALUE>12</VALUE>\n"
                          "</PARAMVALUE>\n"),
         "no XML"});
  ASSERT_EQ(call(), 0);
  EXPECT_EQ(all(elem::PARAMVALUE, attr::NAME), (Texts{"Job", "Left"}));
  EXPECT_EQ(all(elem::PARAMVALUE, attr::PARAMTYPE), (Texts{"reference", "uint32"}));
  EXPECT_STREQ(answer().getValueOf(elem::PARAMVALUE, "left"), "12");
  EXPECT_EQ(answer().getValueOf(elem::PARAMVALUE, "Job"), nullptr);
  CIMelement* const job = answer().findInstanceName("Id", "9");
  ASSERT_NE(job, nullptr);
  EXPECT_STREQ(job->attr_find(attr::CLASSNAME), "CIM_Job");
  expect_answer_ends_with_the_next_request();
}

}  // namespace
