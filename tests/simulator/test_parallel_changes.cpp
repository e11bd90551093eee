#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "shared_simulator.h"

namespace {

constexpr int rounds = 25;

std::string new_note(int id, const std::string& text) {
  return "<IPARAMVALUE NAME=\"NewInstance\"><INSTANCE CLASSNAME=\"DEMO_Note\"><PROPERTY "
         "NAME=\"Id\" TYPE=\"uint32\"><VALUE>" +
         std::to_string(id) + "</VALUE></PROPERTY><PROPERTY NAME=\"Text\" TYPE=\"string\"><VALUE>" +
         text + "</VALUE></PROPERTY></INSTANCE></IPARAMVALUE>";
}

std::string new_class(const std::string& name) {
  return "<IPARAMVALUE NAME=\"NewClass\"><CLASS NAME=\"" + name +
         "\" SUPERCLASS=\"DEMO_Note\"></CLASS></IPARAMVALUE>";
}

// Creates and deletes notes and a class of its own, again and again.
void make_changes(const std::string& url, int number) {
  CimClient client(url);
  const std::string class_name = "TEST_Note" + std::to_string(number);
  const std::string id = std::to_string(number);
  const std::string name = instance_parameter("DEMO_Note", {{"Id", id}});
  for (int i = 0; i < rounds; ++i) {
    EXPECT_EQ(client.call("CreateInstance", new_note(number, "first")).error_text(), "");
    EXPECT_EQ(client.call("CreateClass", new_class(class_name)).error_text(), "");
    EXPECT_EQ(client
                  .call("SetProperty",
                        name + "<IPARAMVALUE NAME=\"PropertyName\"><VALUE>Text</VALUE>"
                               "</IPARAMVALUE><IPARAMVALUE NAME=\"NewValue\"><VALUE>second</VALUE>"
                               "</IPARAMVALUE>")
                  .error_text(),
              "");
    EXPECT_EQ(client.call("DeleteClass", class_parameter(class_name)).error_text(), "");
    EXPECT_EQ(client.call("DeleteInstance", name).error_text(), "");
  }
}

// Reads until it is told to stop: whatever the others do, each answer is whole.
void read(const std::string& url, const std::atomic<bool>& done) {
  CimClient client(url);
  do {
    const CimAnswer answer = client.call("EnumerateInstances", class_parameter("DEMO_Note"));
    for (const auto& each : answer.returned().children("VALUE.NAMEDINSTANCE")) {
      EXPECT_TRUE(find_property(each.child("INSTANCE"), "Id").child("VALUE"));
    }
    const auto names = client.call("EnumerateClassNames", class_parameter("DEMO_Note"));
    EXPECT_EQ(names.error_text(), "");
  } while (!done);
}

TEST(ParallelChanges, ReadersAndWritersDoNotHarmEachOther) {
  const SimulatorProcess simulator;
  const std::string url = simulator.url();
  std::atomic<bool> done = false;
  std::vector<std::thread> writers;
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) readers.emplace_back([&] { read(url, done); });
  for (int i = 0; i < 3; ++i) writers.emplace_back([&, i] { make_changes(url, 100 + i); });
  for (std::thread& each : writers) each.join();
  done = true;
  for (std::thread& each : readers) each.join();

  CimClient client(url);
  EXPECT_FALSE(
      client.call("EnumerateClassNames", class_parameter("DEMO_Note")).returned().first_child());
  const auto names = client.call("EnumerateInstanceNames", class_parameter("DEMO_Note"));
  EXPECT_EQ(names.returned().first_child(), names.returned().last_child());
}

}  // namespace
