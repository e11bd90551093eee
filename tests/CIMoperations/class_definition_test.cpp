#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CIMoperations/tree_text.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

namespace {

using namespace zuCIM;

constexpr const char* source = "Src/CIMoperations";

class ClassDefinition : public testing::Test {
 protected:
  ClassDefinition() {
    container_.host = "myhost";
    container_.setCurrentClass("A", "");
  }

  int extract_from(const std::string& answer) {
    container_.result.eclean();
    build_tree(container_.result, answer);
    return container_.ExtractClassDefinition();
  }

  // The answer whose CLASS has these children; each line begins with six blanks.
  static std::string with_class(const std::string& children) {
    return "CIM\n"
           " MESSAGE\n"
           "  SIMPLERSP\n"
           "   IMETHODRESPONSE\n"
           "    IRETURNVALUE\n"
           "     CLASS NAME=A SUPERCLASS=B\n" +
           children;
  }

  std::string instance_template() { return tree_text(container_.currentClass->instances); }
  std::string methods() { return tree_text(container_.currentClass->methods); }

  void expect_failure(const std::string& step) {
    EXPECT_EQ(container_.currentClass->instances, nullptr);
    EXPECT_EQ(container_.currentClass->methods, nullptr);
    EXPECT_EQ(container_.cimStatus, 0);
    const std::vector<std::string> texts = {"[myhost] ExtractClassDefinition() " + step,
                                            "[myhost] ExtractClassDefinition() A"};
    EXPECT_EQ(recorder_.texts(), texts);
    for (const std::string& text : texts)
      EXPECT_EQ(recorder_.count(trace_level::error, source, text), 1);
  }

  CIMcontainer container_;
  TraceRecorder recorder_;
};

TEST_F(ClassDefinition, BecomesATemplateAndAListOfMethods) {
  EXPECT_EQ(extract_from(with_class("      QUALIFIER NAME=Description\n"
                                    "       VALUE [x]\n"
                                    "      PROPERTY NAME=Id TYPE=string\n"
                                    "       QUALIFIER NAME=Description\n"
                                    "        VALUE [y]\n"
                                    "       QUALIFIER NAME=Key TYPE=boolean\n"
                                    "        VALUE [TRUE]\n"
                                    "      PROPERTY NAME=Load TYPE=uint8\n"
                                    "       VALUE [7]\n"
                                    "      PROPERTY.ARRAY NAME=Tags TYPE=string\n"
                                    "       QUALIFIER NAME=ArrayType\n"
                                    "       VALUE.ARRAY\n"
                                    "        VALUE [a]\n"
                                    "      PROPERTY.REFERENCE NAME=Owner REFERENCECLASS=B\n"
                                    "       QUALIFIER NAME=key\n"
                                    "      METHOD NAME=Start TYPE=uint32\n"
                                    "       QUALIFIER NAME=Description\n"
                                    "        VALUE [z]\n"
                                    "       PARAMETER NAME=p TYPE=uint16\n"
                                    "        QUALIFIER NAME=In\n"
                                    "         VALUE [TRUE]\n"
                                    "       PARAMETER.ARRAY NAME=q\n"
                                    "       PARAMETER.REFERENCE NAME=r\n"
                                    "        QUALIFIER NAME=Out\n"
                                    "       PARAMETER.REFARRAY NAME=s\n"
                                    "      METHOD NAME=Stop TYPE=uint32\n")),
            0);
  EXPECT_EQ(instance_template(),
            "INSTANCE CLASSNAME=A\n"
            " PROPERTY NAME=Id TYPE=string [Key]\n"
            " PROPERTY NAME=Load TYPE=uint8\n"
            " PROPERTY.ARRAY NAME=Tags TYPE=string\n"
            " PROPERTY.REFERENCE NAME=Owner REFERENCECLASS=B [Key]\n");
  EXPECT_EQ(methods(),
            "CIM\n"
            " METHOD NAME=Start TYPE=uint32\n"
            "  PARAMETER NAME=p TYPE=uint16\n"
            "   QUALIFIER NAME=In\n"
            "    VALUE [TRUE]\n"
            "  PARAMETER.ARRAY NAME=q\n"
            "  PARAMETER.REFERENCE NAME=r\n"
            "   QUALIFIER NAME=Out\n"
            "  PARAMETER.REFARRAY NAME=s\n"
            " METHOD NAME=Stop TYPE=uint32\n");
  EXPECT_EQ(tree_text(&container_.result), with_class("      QUALIFIER NAME=Description\n"
                                                      "       VALUE [x]\n"));
  EXPECT_TRUE(recorder_.lines().empty());
}

TEST_F(ClassDefinition, WithoutFeaturesGivesABareTemplate) {
  EXPECT_EQ(extract_from(with_class("")), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n");
  EXPECT_EQ(container_.currentClass->methods, nullptr);
}

TEST_F(ClassDefinition, TemplateHasNoSpareRoomForAttributes) {
  extract_from(with_class(""));
  const CIMarray& attributes = *container_.currentClass->instances->attributes;
  EXPECT_EQ(attributes.argc, 1U);
  EXPECT_EQ(attributes.maxargc, 1U);
}

TEST_F(ClassDefinition, TemplateTakesTheNameFromTheCurrentClass) {
  container_.setCurrentClass("cim_a", "");
  EXPECT_EQ(extract_from("CIM\n CLASS NAME=CIM_A\n  PROPERTY NAME=p\n"), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=cim_a\n PROPERTY NAME=p\n");
}

TEST_F(ClassDefinition, FeaturesMayStandInAnyOrder) {
  EXPECT_EQ(extract_from(with_class("      METHOD NAME=m\n"
                                    "       PARAMETER NAME=a\n"
                                    "      PROPERTY NAME=p\n"
                                    "      QUALIFIER NAME=x\n"
                                    "      METHOD NAME=n\n"
                                    "      PROPERTY NAME=q\n"
                                    "      METHOD NAME=o\n"
                                    "       PARAMETER NAME=b\n")),
            0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=p\n PROPERTY NAME=q\n");
  EXPECT_EQ(methods(),
            "CIM\n"
            " METHOD NAME=m\n"
            "  PARAMETER NAME=a\n"
            " METHOD NAME=n\n"
            " METHOD NAME=o\n"
            "  PARAMETER NAME=b\n");
}

TEST_F(ClassDefinition, OnlyAQualifierOfThePropertyItselfMakesAKey) {
  EXPECT_EQ(extract_from(with_class("      PROPERTY NAME=a\n"
                                    "       VALUE\n"
                                    "        QUALIFIER NAME=Key\n"
                                    "      PROPERTY NAME=b\n"
                                    "       VALUE NAME=Key\n"
                                    "      PROPERTY NAME=c [old]\n"
                                    "       QUALIFIER NAME=KEY\n"
                                    "      PROPERTY NAME=d\n"
                                    "       QUALIFIER NAME=Keys\n"
                                    "      QUALIFIER NAME=Key\n")),
            0);
  EXPECT_EQ(instance_template(),
            "INSTANCE CLASSNAME=A\n"
            " PROPERTY NAME=a\n"
            " PROPERTY NAME=b\n"
            " PROPERTY NAME=c [Key]\n"
            " PROPERTY NAME=d\n");
}

TEST_F(ClassDefinition, PropertiesInsideOtherElementsStayWhereTheyAre) {
  const std::string answer = with_class(
      "      QUALIFIER NAME=x\n"
      "       PROPERTY NAME=p\n");
  EXPECT_EQ(extract_from(answer), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n");
  EXPECT_EQ(tree_text(&container_.result), answer);
}

TEST_F(ClassDefinition, MethodsAreFoundInsideOtherElements) {
  EXPECT_EQ(extract_from(with_class("      QUALIFIER NAME=x\n"
                                    "       METHOD NAME=m\n"
                                    "        PARAMETER NAME=a\n"
                                    "       VALUE\n")),
            0);
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=m\n  PARAMETER NAME=a\n");
}

TEST_F(ClassDefinition, ReplacesTheOneBefore) {
  extract_from(with_class("      PROPERTY NAME=p\n      METHOD NAME=m\n"));
  EXPECT_EQ(extract_from(with_class("      PROPERTY NAME=q\n")), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=q\n");
  EXPECT_EQ(container_.currentClass->methods, nullptr);
}

TEST_F(ClassDefinition, LeavesTheInstanceNamesAlone) {
  container_.currentClass->instanceNames = new CIMelement;
  extract_from(with_class(""));
  EXPECT_NE(container_.currentClass->instanceNames, nullptr);
}

TEST_F(ClassDefinition, FailsForAnotherClass) {
  extract_from(with_class("      PROPERTY NAME=p\n      METHOD NAME=m\n"));
  EXPECT_EQ(extract_from("CIM\n CLASS NAME=B\n  PROPERTY NAME=p\n"), 1001);
  expect_failure("Class-ClassName");
}

TEST_F(ClassDefinition, FailsForAClassWithoutName) {
  EXPECT_EQ(extract_from("CIM\n CLASS\n"), 1001);
  expect_failure("Class-ClassName");
}

TEST_F(ClassDefinition, FailsForAnEntryWithoutName) {
  container_.setCurrentClass("", "");
  for (const char* const answer : {"CIM\n CLASS\n", "CIM\n CLASS NAME=A\n"}) {
    recorder_.clear();
    EXPECT_EQ(extract_from(answer), 1001);
    EXPECT_EQ(recorder_.texts(),
              (std::vector<std::string>{"[myhost] ExtractClassDefinition() Class-ClassName",
                                        "[myhost] ExtractClassDefinition() "}));
    EXPECT_EQ(container_.currentClass->instances, nullptr);
  }
}

TEST_F(ClassDefinition, FailsWithoutClass) {
  EXPECT_EQ(extract_from("CIM\n IRETURNVALUE\n"), 1001);
  expect_failure("Class-ClassName");
}

TEST_F(ClassDefinition, FailsWithoutAnAnswer) {
  EXPECT_EQ(container_.ExtractClassDefinition(), 1001);
  expect_failure("Class-ClassName");
}

TEST_F(ClassDefinition, LooksAtTheFirstClassOnly) {
  EXPECT_EQ(extract_from("CIM\n CLASS NAME=B\n CLASS NAME=A\n"), 1001);
  expect_failure("Class-ClassName");
}

TEST_F(ClassDefinition, EndsWhereTheClassEnds) {
  EXPECT_EQ(extract_from(with_class("      PROPERTY NAME=p\n"
                                    "      METHOD NAME=m\n"
                                    "     CLASS NAME=B\n"
                                    "      PROPERTY NAME=q\n"
                                    "      METHOD NAME=n\n")),
            0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=p\n");
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=m\n");
  EXPECT_EQ(tree_text(&container_.result), with_class("     CLASS NAME=B\n"
                                                      "      PROPERTY NAME=q\n"
                                                      "      METHOD NAME=n\n"));
}

// A subtree's end is looked for two levels up only: a parameter at the very end of its class takes
// the next class along, and then the method no longer ends where it did.
TEST_F(ClassDefinition, FailsWhenAParameterReachesBeyondItsMethod) {
  EXPECT_EQ(extract_from(with_class("      PROPERTY NAME=p\n"
                                    "      METHOD NAME=m\n"
                                    "       PARAMETER NAME=a\n"
                                    "     CLASS NAME=B\n")),
            1001);
  expect_failure("Class-Methods");
}

// For the same reason a method or property at the very end takes along, and frees, what follows
// further up.
TEST_F(ClassDefinition, TheLastFeatureSwallowsWhatFollowsFurtherUp) {
  const std::string rest = "    PARAMVALUE NAME=x\n     VALUE [1]\n";
  EXPECT_EQ(extract_from(with_class("      METHOD NAME=m\n") + rest), 0);
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=m\n");
  EXPECT_EQ(tree_text(&container_.result), with_class(""));

  EXPECT_EQ(extract_from(with_class("      METHOD NAME=n\n      PROPERTY NAME=p\n") + rest), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=p\n");
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=n\n");
  EXPECT_EQ(tree_text(&container_.result), with_class(""));
}

TEST_F(ClassDefinition, TheLastParameterTakesAlongWhatFollowsFurtherUp) {
  EXPECT_EQ(extract_from(with_class("      METHOD NAME=m\n"
                                    "       PARAMETER NAME=a\n"
                                    "    PARAMVALUE NAME=x\n")),
            0);
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=m\n  PARAMETER NAME=a\n   PARAMVALUE NAME=x\n");
}

TEST_F(ClassDefinition, MayBeTheRootOfTheAnswer) {
  EXPECT_EQ(extract_from("CLASS NAME=A\n PROPERTY NAME=p\n METHOD NAME=m\n"), 0);
  EXPECT_EQ(instance_template(), "INSTANCE CLASSNAME=A\n PROPERTY NAME=p\n");
  EXPECT_EQ(methods(), "CIM\n METHOD NAME=m\n");
}

TEST_F(ClassDefinition, MayHaveManyFeatures) {
  constexpr int count = 20000;
  std::string children;
  for (int i = 0; i < count; ++i)
    children +=
        "      QUALIFIER\n"
        "      PROPERTY\n"
        "       QUALIFIER NAME=Key\n"
        "      METHOD\n"
        "       PARAMETER\n";
  EXPECT_EQ(extract_from(with_class(children)), 0);
  const CIMclass& entry = *container_.currentClass;
  EXPECT_NE(entry.instances->findelement(elem::PROPERTY, count - 1), nullptr);
  EXPECT_EQ(entry.instances->findelement(elem::PROPERTY, count), nullptr);
  EXPECT_NE(entry.methods->findelement(elem::METHOD, count - 1), nullptr);
  EXPECT_EQ(entry.methods->findelement(elem::METHOD, count), nullptr);
  EXPECT_NE(entry.methods->findelement(elem::PARAMETER, count - 1), nullptr);
}

}  // namespace
