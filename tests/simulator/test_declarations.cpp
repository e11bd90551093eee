#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "growth.h"
#include "loader.h"
#include "xml_writer.h"

namespace {

using namespace simulator;
using testing::HasSubstr;

// A directory of declaration files that goes away with the object.
class DataDirectory {
 public:
  DataDirectory() {
    std::string form = (std::filesystem::temp_directory_path() / "declarations-XXXXXX").string();
    path_ = ::mkdtemp(form.data());
  }
  ~DataDirectory() { std::filesystem::remove_all(path_); }
  DataDirectory(const DataDirectory&) = delete;
  DataDirectory& operator=(const DataDirectory&) = delete;

  void write(const std::string& file, const std::string& text) const {
    std::ofstream(path_ / file) << text;
  }

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

const std::string here =
    "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"a\"/><NAMESPACE NAME=\"b\"/></LOCALNAMESPACEPATH>";

std::string declare(const std::string& declarations, const std::string& name_space = here) {
  return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><DECLARATION><DECLGROUP>" + name_space +
         declarations + "</DECLGROUP></DECLARATION></CIM>";
}

const std::string key = "<QUALIFIER NAME=\"key\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></QUALIFIER>";
const std::string base = "<CLASS NAME=\"Base\"><PROPERTY NAME=\"Id\" TYPE=\"uint8\">" + key +
                         "</PROPERTY><PROPERTY.ARRAY NAME=\"Texts\" TYPE=\"string\"/></CLASS>";

std::string instance(const std::string& id, const std::string& more = {}) {
  return "<INSTANCE CLASSNAME=\"Base\"><PROPERTY NAME=\"Id\" TYPE=\"uint8\"><VALUE>" + id +
         "</VALUE></PROPERTY>" + more + "</INSTANCE>";
}

Repository load(const std::string& text) {
  const DataDirectory data;
  data.write("one.xml", text);
  Repository repository;
  load_directory(repository, data.path());
  return repository;
}

std::string complaint_about(const std::string& text) {
  try {
    load(text);
  } catch (const DeclarationError& error) {
    return error.what();
  }
  return "none";
}

TEST(Declarations, OrderDoesNotMatterAndDeclarationsMayBeWrapped) {
  const DataDirectory data;
  data.write("1.xml", declare(instance("1") + "<VALUE.OBJECT><CLASS NAME=\"Derived\" "
                                              "SUPERCLASS=\"Base\"/></VALUE.OBJECT>"));
  data.write("2.xml", declare(base));
  data.write("3.txt", "not looked at");
  Repository repository;
  load_directory(repository, data.path());
  const Namespace* name_space = repository.find("A/B");
  ASSERT_NE(name_space, nullptr);
  const Class* type = name_space->find_class("base");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->subclasses.size(), 1U);
  EXPECT_EQ(name_space->instances_of(*type).list().size(), 1U);
}

TEST(Declarations, ClassesWithoutANamespaceGoIntoAllOfThem) {
  const std::string elsewhere = "<LOCALNAMESPACEPATH><NAMESPACE NAME=\"c\"/></LOCALNAMESPACEPATH>";
  const DataDirectory data;
  data.write("1.xml", declare(base, ""));
  data.write("2.xml", declare("<CLASS NAME=\"B\"/>"));
  data.write("3.xml", declare("<CLASS NAME=\"C\"/>", elsewhere));
  Repository repository;
  load_directory(repository, data.path());
  ASSERT_NE(repository.find("a/b"), nullptr);
  ASSERT_NE(repository.find("c"), nullptr);
  EXPECT_NE(repository.find("a/b")->find_class("Base"), nullptr);
  EXPECT_NE(repository.find("c")->find_class("Base"), nullptr);
  EXPECT_EQ(repository.find("c")->find_class("B"), nullptr);
}

struct WrongDeclaration {
  std::string text;
  const char* complaint;
};

TEST(Declarations, WhatDoesNotFitIsReportedWithItsFile) {
  const std::string two_keys = instance("1") + instance("0x1");
  const std::vector<WrongDeclaration> cases{
      {"<CIM>", "one.xml: "},
      {"<CIM/>", "no DECLARATION"},
      {declare("<METHOD/>"), "unexpected METHOD"},
      {declare("<CLASS/>"), "CLASS has no NAME"},
      {declare(base), "none"},
      {declare(base + instance("1"), ""), "an instance needs a namespace"},
      {declare(base + base), "Base is declared twice"},
      {declare("<CLASS NAME=\"D\" SUPERCLASS=\"Nonesuch\"/>"), "D has no superclass Nonesuch"},
      {declare("<CLASS NAME=\"D\" SUPERCLASS=\"E\"/><CLASS NAME=\"E\" SUPERCLASS=\"D\"/>"),
       "D has no superclass E"},
      {declare(base + "<CLASS NAME=\"D\" SUPERCLASS=\"Base\"><PROPERTY NAME=\"ID\" "
                      "TYPE=\"uint16\"/></CLASS>"),
       "D.ID overrides Base.Id with another type"},
      {declare("<CLASS NAME=\"D\"><PROPERTY NAME=\"x\" TYPE=\"string\"/><PROPERTY NAME=\"X\" "
               "TYPE=\"uint8\"/></CLASS>"),
       "D.X"},
      {declare(instance("1")), "no class Base in a/b"},
      {declare(base + instance("256")), "Base.Id is given a value that is no uint8"},
      {declare(base + instance("")), "Base.Id is given a value that is no uint8"},
      {declare(base + "<INSTANCE CLASSNAME=\"Base\"/>"), "has no value for its key Id"},
      {declare(base + two_keys), "two instances of Base have the same keys"},
      {declare(base + instance("1", "<PROPERTY NAME=\"X\" TYPE=\"string\"/>")),
       "Base has no property X"},
      {declare(base + instance("1", "<PROPERTY NAME=\"Texts\" TYPE=\"string\"/>")),
       "Base.Texts is given a value of another shape"},
      {declare(base + instance("1", "<PROPERTY.ARRAY NAME=\"Texts\" TYPE=\"uint8\"/>")),
       "Base.Texts is string, not uint8"},
      {declare("<CLASS NAME=\"D\"/><INSTANCE CLASSNAME=\"D\"/>"), "D has no keys"},
  };
  for (const WrongDeclaration& each : cases) {
    EXPECT_THAT(complaint_about(each.text), HasSubstr(each.complaint)) << each.text;
  }
}

TEST(Declarations, AnEmptyDirectoryIsAnError) {
  const DataDirectory data;
  Repository repository;
  EXPECT_THROW(load_directory(repository, data.path()), DeclarationError);
}

TEST(Declarations, NullEntriesOfArraysAndWhiteSpaceSurvive) {
  const Repository repository = load(
      declare(base + instance("1",
                              "<PROPERTY.ARRAY NAME=\"Texts\" TYPE=\"string\"><VALUE.ARRAY>"
                              "<VALUE> </VALUE><VALUE.NULL/><VALUE>a&#10;<![CDATA[<b>]]></VALUE>"
                              "</VALUE.ARRAY></PROPERTY.ARRAY>")));
  const Namespace& name_space = *repository.find("a/b");
  const Class& type = *name_space.find_class("Base");
  std::string out;
  InstanceWriter(type, {1}, {}).append(out, *name_space.instances_of(type).list().front());
  EXPECT_EQ(out,
            "<INSTANCE CLASSNAME=\"Base\" >\n"
            "<PROPERTY.ARRAY NAME=\"Texts\"  TYPE=\"string\">\n"
            "<VALUE.ARRAY>\n"
            "<VALUE> </VALUE>\n"
            "<VALUE.NULL></VALUE.NULL>\n"
            "<VALUE>a&#10;&lt;b&gt;</VALUE>\n"
            "</VALUE.ARRAY>\n"
            "</PROPERTY.ARRAY>\n"
            "</INSTANCE>\n");
}

TEST(Declarations, GrowthStopsWhereTheKeyIsTooNarrow) {
  Repository repository = load(declare(base + instance("1")));
  EXPECT_THROW(grow(repository, "Base", 1), DeclarationError);
}

}  // namespace
