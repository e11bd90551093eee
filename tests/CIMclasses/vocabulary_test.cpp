#include "zuCIM/vocabulary.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace zuCIM {
namespace {

struct Row {
  int id;
  const char* name;
};

// Compares a table with rows that must name each id exactly once, in order.
template <std::size_t N, std::size_t M>
void expect_table(const char* const (&table)[N], const Row (&rows)[M]) {
  ASSERT_EQ(N, M);
  for (std::size_t i = 0; i < N; ++i) {
    EXPECT_EQ(rows[i].id, static_cast<int>(i));
    ASSERT_NE(table[i], nullptr) << "row " << i;
    EXPECT_STREQ(table[i], rows[i].name) << "row " << i;
  }
}

TEST(Vocabulary, TheElementTableHasItsPublishedRows) {
  constexpr Row rows[] = {
      {0, "?xml"},
      {1, "CIM"},
      {2, "CLASS"},
      {3, "CLASSNAME"},
      {4, "CLASSPATH"},
      {5, "DECLARATION"},
      {6, "DECLGROUP"},
      {7, "DECLGROUP.WITHNAME"},
      {8, "DECLGROUP.WITHPATH"},
      {9, "ERROR"},
      {10, "EXPMETHODCALL"},
      {11, "EXPMETHODRESPONSE"},
      {12, "EXPPARAMVALUE"},
      {13, "HOST"},
      {14, "IMETHODCALL"},
      {15, "IMETHODRESPONSE"},
      {16, "INSTANCE"},
      {17, "INSTANCENAME"},
      {18, "INSTANCEPATH"},
      {19, "IPARAMVALUE"},
      {20, "IRETURNVALUE"},
      {21, "KEYBINDING"},
      {22, "KEYVALUE"},
      {23, "LOCALCLASSPATH"},
      {24, "LOCALINSTANCEPATH"},
      {25, "LOCALNAMESPACEPATH"},
      {26, "MESSAGE"},
      {27, "METHOD"},
      {28, "METHODCALL"},
      {29, "METHODRESPONSE"},
      {30, "MULTIEXPREQ"},
      {31, "MULTIEXPRSP"},
      {32, "MULTIREQ"},
      {33, "MULTIRSP"},
      {34, "NAMESPACE"},
      {35, "NAMESPACEPATH"},
      {36, "OBJECTPATH"},
      {37, "PARAMETER"},
      {38, "PARAMETER.ARRAY"},
      {39, "PARAMETER.REFARRAY"},
      {40, "PARAMETER.REFERENCE"},
      {41, "PARAMVALUE"},
      {42, "PROPERTY"},
      {43, "PROPERTY.ARRAY"},
      {44, "PROPERTY.REFERENCE"},
      {45, "QUALIFIER"},
      {46, "QUALIFIER.DECLARATION"},
      {47, "RESPONSEDESTINATION"},
      {48, "RETURNVALUE"},
      {49, "SCOPE"},
      {50, "SIMPLEEXPREQ"},
      {51, "SIMPLEEXPRSP"},
      {52, "SIMPLEREQ"},
      {53, "SIMPLEREQACK"},
      {54, "SIMPLERSP"},
      {55, "TABLE"},
      {56, "TABLECELL.DECLARATION"},
      {57, "TABLECELL.REFERENCE"},
      {58, "TABLEROW"},
      {59, "TABLEROW.DECLARATION"},
      {60, "VALUE"},
      {61, "VALUE.ARRAY"},
      {62, "VALUE.NAMEDINSTANCE"},
      {63, "VALUE.NAMEDOBJECT"},
      {64, "VALUE.NULL"},
      {65, "VALUE.OBJECT"},
      {66, "VALUE.OBJECTWITHLOCALPATH"},
      {67, "VALUE.OBJECTWITHPATH"},
      {68, "VALUE.REFARRAY"},
      {69, "VALUE.REFERENCE"},
      {70, "unknown"},
  };
  expect_table(known_cim_elements, rows);
}

TEST(Vocabulary, TheAttributeTableHasItsPublishedRows) {
  constexpr Row rows[] = {
      {0, "NAME"},
      {1, "TYPE"},
      {2, "ARRAYSIZE"},
      {3, "ASSOCIATION"},
      {4, "CELLPOS"},
      {5, "CIMVERSION"},
      {6, "CLASS"},
      {7, "CLASSNAME"},
      {8, "CLASSORIGIN"},
      {9, "CODE"},
      {10, "DESCRIPTION"},
      {11, "DTDVERSION"},
      {12, "ID"},
      {13, "INDICATION"},
      {14, "INSTANCEID"},
      {15, "ISARRAY"},
      {16, "METHOD"},
      {17, "OVERRIDABLE"},
      {18, "PARAMETER"},
      {19, "PARAMTYPE"},
      {20, "PROPAGATED"},
      {21, "PROPERTY"},
      {22, "PROTOCOLVERSION"},
      {23, "REFERENCE"},
      {24, "REFERENCECLASS"},
      {25, "SORTDIR"},
      {26, "SORTPOS"},
      {27, "SUPERCLASS"},
      {28, "VALUETYPE"},
      {29, "TOSUBCLASS"},
      {30, "TOINSTANCE"},
      {31, "TRANSLATABLE"},
      {32, "EmbeddedObject"},
      {33, "unknown"},
  };
  expect_table(known_cim_attributes, rows);
}

TEST(Vocabulary, TheTypeTableHasUnknownBeforeReference) {
  constexpr Row rows[] = {
      {0, "boolean"}, {1, "string"},  {2, "char16"},   {3, "uint8"},
      {4, "sint8"},   {5, "uint16"},  {6, "sint16"},   {7, "uint32"},
      {8, "sint32"},  {9, "uint64"},  {10, "sint64"},  {11, "datetime"},
      {12, "real32"}, {13, "real64"}, {14, "unknown"}, {15, "reference"},
  };
  expect_table(known_cim_types, rows);
}

TEST(Vocabulary, TheIntrinsicMethodTableKeepsTheSpellingOfRow22) {
  constexpr Row rows[] = {
      {0, "GetClass"},
      {1, "GetInstance"},
      {2, "DeleteClass"},
      {3, "DeleteInstance"},
      {4, "CreateClass"},
      {5, "CreateInstance"},
      {6, "ModifyClass"},
      {7, "ModifyInstance"},
      {8, "EnumerateClasses"},
      {9, "EnumerateClassNames"},
      {10, "EnumerateInstances"},
      {11, "EnumerateInstanceNames"},
      {12, "ExecQuery"},
      {13, "Associators"},
      {14, "AssociatorNames"},
      {15, "References"},
      {16, "ReferenceNames"},
      {17, "GetProperty"},
      {18, "SetProperty"},
      {19, "GetQualifier"},
      {20, "SetQualifier"},
      {21, "DeleteQualifier"},
      {22, "EnumarateQualifiers"},
      {23, "unknown"},
  };
  expect_table(known_cim_imethods, rows);
}

TEST(Vocabulary, TheNamedIdsStandForTheirRows) {
  const struct {
    int id;
    int number;
  } ids[] = {
      {elem::XML_DECLARATION, 0},
      {elem::CIM, 1},
      {elem::ERROR, 9},
      {elem::INSTANCE, 16},
      {elem::INSTANCENAME, 17},
      {elem::KEYBINDING, 21},
      {elem::KEYVALUE, 22},
      {elem::PROPERTY, 42},
      {elem::PROPERTY_ARRAY, 43},
      {elem::PROPERTY_REFERENCE, 44},
      {elem::VALUE, 60},
      {elem::VALUE_REFERENCE, 69},
      {elem::UNKNOWN, 70},
      {attr::NAME, 0},
      {attr::EMBEDDEDOBJECT, 32},
      {attr::UNKNOWN, 33},
      {type::boolean, 0},
      {type::unknown, 14},
      {type::reference, 15},
      {imethod::GetClass, 0},
      {imethod::EnumerateQualifiers, 22},
      {imethod::unknown, 23},
  };
  for (const auto& row : ids) EXPECT_EQ(row.id, row.number);
}

TEST(Vocabulary, NoTwoElementRowsShareAnAddress) {
  for (int i = 0; i < elem::COUNT; ++i)
    for (int j = 0; j < i; ++j) EXPECT_NE(known_cim_elements[i], known_cim_elements[j]);
}

TEST(Vocabulary, ThePropertyNamesAndTheDefaultNamespaceAreAsPublished) {
  EXPECT_STREQ(PROP_QUERYLANGUAGE, "QueryLanguage");
  EXPECT_STREQ(PROP_QUERY, "Query");
  EXPECT_STREQ(PROP_SYSCREATIONCLASSNAME, "SystemCreationClassName");
  EXPECT_STREQ(PROP_DESTINATION, "Destination");
  EXPECT_STREQ(PROP_SOURCENAMESPACE, "SourceNamespace");
  EXPECT_STREQ(PROP_NAME, "Name");
  EXPECT_STREQ(PROP_CREATIONCLASSNAME, "CreationClassName");
  EXPECT_STREQ(PROP_SYSTEMNAME, "SystemName");
  EXPECT_STREQ(nsCIMV2, "root/cimv2");
}

TEST(Vocabulary, TheModuleRecordCarriesNumberNameAndVersion) {
  EXPECT_EQ(BRQ_MODULE_INFO_zuCIM.number(), 300U);
  EXPECT_STREQ(BRQ_MODULE_INFO_zuCIM.name(), "zuCIM");
  EXPECT_STREQ(BRQ_MODULE_INFO_zuCIM.version(), "P:5.8.12 F:5.8.12");
}

}  // namespace
}  // namespace zuCIM
