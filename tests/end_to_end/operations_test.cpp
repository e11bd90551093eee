#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "end_to_end/admitted_context.h"
#include "support/certificates.h"
#include "support/run_program.h"

// Every operation, one after the other, against the simulator; wbemcli looks at the outcome.
namespace {

using namespace zuCIM;

CIMelement* as_element(std::intptr_t result) {
  return reinterpret_cast<CIMelement*>(result);
}

_properties_ property(const char* name, std::uint32_t type, const void* values) {
  return {.name = name, .type = type, .count = 1, .values = values, .reference = nullptr};
}

constexpr _properties_ last_property{nullptr, 0, 0, nullptr, nullptr};
constexpr _paramvalue_ last_parameter{nullptr, 0, 0, nullptr};

// A document whose only element below CIM is `content`.
std::unique_ptr<CIMelement> parse(const std::string& content) {
  auto root = std::make_unique<CIMelement>();
  EXPECT_EQ(
      root->ParseCIMXML("<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\">" + content + "</CIM>"),
      0U);
  return root;
}

class Operations : public ::testing::TestWithParam<std::string> {
 protected:
  Operations() {
    std::vector<std::string> arguments{"--address", address};
    if (is_https()) {
      const CertificateFiles files = make_server_certificate(
          std::string("operations-") +
              ::testing::UnitTest::GetInstance()->current_test_info()->name()[0],
          {"IP:" + address});
      arguments.insert(arguments.end(), {"--port", "5989", "--https", "--certificate",
                                         files.certificate, "--key", files.key});
    }
    simulator_ = std::make_unique<SimulatorProcess>(arguments);
    context_ = admitted_context(std::to_string(simulator_->port()), "secret",
                                is_https() ? test_certificates().authority : "");
  }

  static bool is_https() { return GetParam() == "https"; }

  // What wbemcli prints for an operation on an object of the simulator.
  std::string seen_by_wbemcli(const std::string& operation, const std::string& object) const {
    const std::string url = GetParam() + "://root:secret@" + address + ":" +
                            std::to_string(simulator_->port()) + "/" + object;
    return run_program({"wbemcli", operation, "-nl", "-noverify", url}).out;
  }

  CIMelement* only_instance_name(const char* class_name) {
    context_->setCurrentClass(class_name, "");
    CIMelement* const name = context_->Imethod_EnumerateInstanceNames();
    EXPECT_NE(name, nullptr);
    return name;
  }

  // HTTPS has one port only, and tests run side by side: each process takes an address of its own.
  static std::string own_address() {
    const int process = static_cast<int>(getpid());
    return "127.1." + std::to_string(process / 250 % 250 + 1) + "." +
           std::to_string(process % 250 + 1);
  }

  const std::string address = own_address();

  RegistryCleaner cleaner_;
  SmallNetwork network_{address};
  std::unique_ptr<SimulatorProcess> simulator_;
  CIMcontainer* context_ = nullptr;
};

TEST_P(Operations, InstancesAreCreatedReadModifiedAndDeleted) {
  const std::uint32_t id = 4711;
  context_->setCurrentClass("DEMO_Note", "");
  const _properties_ properties[] = {property("Id", type::uint32, &id),
                                     property("Text", type::string, "first"), last_property};
  CIMelement* const name = as_element(context_->Imethod_CreateInstance(properties));
  ASSERT_NE(name, nullptr) << context_->ChkCimStatus();
  EXPECT_STREQ(name->getValueOf(elem::KEYBINDING, "Id"), "4711");
  EXPECT_NE(seen_by_wbemcli("ein", "root/cimv2:DEMO_Note").find("Id=4711"), std::string::npos);

  CIMelement* instance = as_element(context_->Imethod_GetInstance(name, -1, nullptr));
  ASSERT_NE(instance, nullptr);
  EXPECT_STREQ(instance->getValueOfProperty("Text"), "first");

  const auto changed = parse(
      "<INSTANCE CLASSNAME=\"DEMO_Note\"><PROPERTY NAME=\"Text\" TYPE=\"string\">"
      "<VALUE>second</VALUE></PROPERTY></INSTANCE>");
  CIMarray list;
  list.putargv("Text", -1, 15);
  EXPECT_EQ(context_->Imethod_ModifyInstance(name, *changed->next, &list), 0);
  EXPECT_NE(seen_by_wbemcli("ei", "root/cimv2:DEMO_Note").find("second"), std::string::npos);

  EXPECT_EQ(context_->Imethod_DeleteInstance(name), 0);
  EXPECT_EQ(context_->currentClass->instanceNames, nullptr);
  EXPECT_EQ(seen_by_wbemcli("ein", "root/cimv2:DEMO_Note").find("Id=4711"), std::string::npos);
}

TEST_P(Operations, RefusedChangesGiveTheServersStatus) {
  const std::uint32_t id = 1;
  context_->setCurrentClass("DEMO_Note", "");
  const _properties_ existing[] = {property("Id", type::uint32, &id), last_property};
  EXPECT_EQ(context_->Imethod_CreateInstance(existing), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 11);
  context_->setCurrentClass("DEMO_Nonsense", "");
  EXPECT_EQ(context_->Imethod_CreateInstance(existing), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 5);
  CIMelement missing(*only_instance_name("DEMO_Note"));
  free(missing.next->next->value);
  missing.next->next->value = strdup("99");
  EXPECT_EQ(context_->Imethod_GetProperty(&missing, "Text"), 6);
}

TEST_P(Operations, PropertiesAreReadAndWritten) {
  CIMelement* const name = only_instance_name("DEMO_Note");
  EXPECT_EQ(context_->Imethod_SetProperty(name, "Text", "written"), 0);
  EXPECT_EQ(context_->Imethod_GetProperty(name, "Text"), 0);
  const CIMelement* const value = context_->result.findelement(elem::VALUE, 0);
  ASSERT_NE(value, nullptr);
  EXPECT_STREQ(value->value, "written");
  EXPECT_NE(seen_by_wbemcli("ei", "root/cimv2:DEMO_Note").find("written"), std::string::npos);
  EXPECT_EQ(context_->Imethod_SetProperty(name, "Text", ""), 0);
  EXPECT_EQ(context_->Imethod_GetProperty(name, "Text"), 0);
  EXPECT_EQ(context_->result.findelement(elem::VALUE, 0), nullptr);
  EXPECT_EQ(context_->Imethod_GetProperty(name, "Nonsense"), 12);
}

TEST_P(Operations, ClassesAreCreatedModifiedListedAndDeleted) {
  const auto created = parse(
      "<CLASS NAME=\"DEMO_Made\"><PROPERTY NAME=\"Id\" TYPE=\"uint32\"><QUALIFIER NAME=\"Key\" "
      "TYPE=\"boolean\"><VALUE>true</VALUE></QUALIFIER></PROPERTY></CLASS>");
  context_->setCurrentClass("DEMO_Made", "");
  ASSERT_EQ(context_->Imethod_CreateClass(*created->next), 0);
  EXPECT_EQ(context_->Imethod_CreateClass(*created->next), 11);
  EXPECT_NE(seen_by_wbemcli("gc", "root/cimv2:DEMO_Made").find("DEMO_Made"), std::string::npos);

  const auto modified = parse(
      "<CLASS NAME=\"DEMO_Made\"><PROPERTY NAME=\"Id\" TYPE=\"uint32\"><QUALIFIER NAME=\"Key\" "
      "TYPE=\"boolean\"><VALUE>true</VALUE></QUALIFIER></PROPERTY>"
      "<PROPERTY NAME=\"Added\" TYPE=\"string\"/></CLASS>");
  EXPECT_EQ(context_->Imethod_ModifyClass(*modified->next), 0);
  EXPECT_EQ(context_->Imethod_GetClass(0, 1, -1, nullptr), 0);
  EXPECT_NE(context_->currentClass->instances->findProperty("Added"), nullptr);

  context_->setCurrentClass("", "");
  EXPECT_EQ(context_->Imethod_EnumerateClassNames(1), 0);
  int names = 0;
  bool listed = false;
  for (CIMelement* node = &context_->result; node != nullptr; node = node->next) {
    if (node->name != known_cim_elements[elem::CLASSNAME]) continue;
    ++names;
    listed = listed || node->attr_find_exact(attr::NAME, "DEMO_Made") == 0;
  }
  EXPECT_GE(names, 50);
  EXPECT_TRUE(listed);
  EXPECT_EQ(context_->Imethod_EnumerateClasses(1, 0, 0, 0), 0);
  EXPECT_NE(context_->result.search_elem(elem::CLASS, "DEMO_Made"), nullptr);

  context_->setCurrentClass("DEMO_Made", "");
  EXPECT_EQ(context_->Imethod_DeleteClass(), 0);
  EXPECT_EQ(context_->Imethod_GetClass(-1, -1, -1, nullptr), 6);
  context_->setCurrentClass("CIM_ManagedElement", "");
  EXPECT_EQ(context_->Imethod_DeleteClass(), 8);
}

TEST_P(Operations, AQueryIsAnswered) {
  EXPECT_EQ(context_->setCurrentClass("DEMO_Note", "")->instances, nullptr);
  ASSERT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_Fan"), 0);
  int instances = 0;
  while (context_->result.findelement(elem::INSTANCE, instances) != nullptr) ++instances;
  EXPECT_GE(instances, 2);
  EXPECT_EQ(context_->Imethod_ExecQuery("Klingon", "CIM_Fan"), 14);
  EXPECT_EQ(context_->Imethod_ExecQuery("WQL", "CIM_Fan where"), 15);
}

TEST_P(Operations, MethodsAreCalledWithTypedParameters) {
  CIMelement* const service = only_instance_name("DEMO_Service");
  const std::int32_t numbers[] = {-1, 0, 2147483647};
  const _paramvalue_ parameters[] = {{"ArraySint32", type::sint32 | type::array_bit, 3, numbers},
                                     {"ScalarString", type::string, 1, "a text"},
                                     {"Link", type::reference, 1, service},
                                     last_parameter};
  ASSERT_EQ(context_->performExtrinsicMethod("Echo", service, parameters), 0);
  CIMelement* const array = context_->result.search_elem(elem::PARAMVALUE, "ArraySint32");
  ASSERT_NE(array, nullptr);
  EXPECT_STREQ(array->next->next->value, "-1");
  EXPECT_STREQ(context_->result.getValueOf(elem::PARAMVALUE, "ScalarString"), "a text");
  EXPECT_NE(context_->result.search_elem(elem::PARAMVALUE, "Link"), nullptr);
}

TEST_P(Operations, TheNumberAMethodReturnsIsTheStatus) {
  for (const std::int64_t number : {0LL, 4LL, -7LL, 2147483647LL}) {
    CIMelement* const service = only_instance_name("DEMO_Service");
    const _paramvalue_ parameters[] = {{"Number", type::sint64, 1, &number}, last_parameter};
    EXPECT_EQ(context_->performExtrinsicMethod("ReturnNumber", service, parameters), number);
    EXPECT_EQ(context_->ChkCimStatus(), number);
  }
  EXPECT_EQ(context_->performExtrinsicMethod("ReturnNothing", only_instance_name("DEMO_Service"),
                                             &last_parameter),
            1001);
  EXPECT_EQ(context_->performExtrinsicMethod("Nonsense", only_instance_name("DEMO_Service"),
                                             &last_parameter),
            17);
}

TEST_P(Operations, NamespacesAreDiscovered) {
  CIMclass* const chosen = context_->setCurrentClass("DEMO_Note", "");
  CIMarray names;
  ASSERT_EQ(context_->getNameSpace(names), 0);
  EXPECT_EQ(context_->currentClass, chosen);
  ASSERT_EQ(names.argc, 2U);
  EXPECT_STREQ(static_cast<char*>(names.argv[0]), "root/cimv2");
  EXPECT_STREQ(static_cast<char*>(names.argv[1]), "root/interop");
}

TEST_P(Operations, WhatIsNotImplementedChangesNothing) {
  CIMelement* const name = only_instance_name("DEMO_Note");
  ASSERT_NE(name, nullptr);
  const int outcomes[] = {
      context_->Imethod_Associators(),     context_->Imethod_AssociatorNames(),
      context_->Imethod_References(),      context_->Imethod_ReferenceNames(),
      context_->Imethod_GetQualifier(),    context_->Imethod_SetQualifier(),
      context_->Imethod_DeleteQualifier(), context_->Imethod_EnumerateQualifiers()};
  for (const int outcome : outcomes) EXPECT_EQ(outcome, 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_EQ(context_->currentClass->instanceNames->next, name);
}

INSTANTIATE_TEST_SUITE_P(EndToEnd, Operations, ::testing::Values("http", "https"),
                         [](const auto& test) { return test.param; });

}  // namespace
