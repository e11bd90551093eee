#include "hostile/behaviour.h"
#include "hostile/memory_growth.h"
#include "support/http_answer.h"

// Documents that are malformed, or well-formed and made to hurt.

namespace {

// Sanitizers make everything slow.
constexpr std::size_t million = MemoryGrowth::under_sanitizer ? 50000 : 1000000;
const std::string opening = "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\">";
const std::string closing = "</CIM>";

// A document; its size counts, since it takes a few times that to read it.
AnswerBehaviour sends(const std::string& name, int status, const std::function<std::string()>& make,
                      std::size_t most_mebibytes = 16, const std::string& trace = "") {
  return {{name, {status}, EndedBy::peer, most_mebibytes, time_for_much},
          [make] { return answer_with(http_answer(make())); },
          0,
          trace};
}

AnswerBehaviour sends(const std::string& name, int status, const std::string& document,
                      const std::string& trace = "") {
  return sends(
      name, status, [document] { return document; }, 16, trace);
}

// The million of a thing, within a good document.
AnswerBehaviour floods(const std::string& name, int status, std::size_t most_mebibytes,
                       const std::string& before, const std::string& thing,
                       const std::string& after = "") {
  const auto make = [=] { return opening + before + repeated(million, thing) + after + closing; };
  return sends(name, status, make, most_mebibytes);
}

std::string in_utf_16(const std::string& text) {
  std::string result = "\xFF\xFE";
  for (const char character : text) result += {character, '\0'};
  return result;
}

std::string with_entities() {
  std::string entities = "<!ENTITY a0 \"0123456789\">";
  for (int i = 1; i < 30; ++i) {
    const std::string one = "&a" + std::to_string(i - 1) + ";";
    entities += "<!ENTITY a" + std::to_string(i) + " \"" + repeated(10, one) + "\">";
  }
  return "<?xml version=\"1.0\"?><!DOCTYPE CIM [" + entities +
         "]><CIM CIMVERSION=\"2.0\"><VALUE>&a29;</VALUE></CIM>";
}

std::string with_error(const std::string& attributes) {
  return error_document("<ERROR " + attributes + "/>");
}

}  // namespace

std::vector<AnswerBehaviour> document_behaviours() {
  const std::string lost_end = "findNextElement: Missing correspending keyword </VALUE>";
  const std::string unknown = "findNextElement: Unknown CIM Elementname";
  std::vector<AnswerBehaviour> all = {
      sends(
          "elements in a million levels", 0,
          [] {
            return opening + repeated(million, "<INSTANCE>") + repeated(million, "</INSTANCE>") +
                   closing;
          },
          256),
      sends(
          "elements in a million levels after a comment", 0,
          [] {
            return opening + "<!-- -->" + repeated(million, "<INSTANCE>") +
                   repeated(million, "</INSTANCE>") + closing;
          },
          512),
      sends(
          "a million elements that are never closed", 5002,
          [] { return opening + repeated(million, "<INSTANCE>") + closing; }, 256),
      sends(
          "a million end tags", 5002,
          [] { return opening + repeated(million, "</VALUE>") + closing; }, 64),
      floods("a million tiny elements", 0, 256, "", "<VALUE/>"),
      floods("a million tiny elements after a comment", 0, 512, "<!-- -->", "<VALUE/>"),
      floods("a million texts", 0, 256, "", "<VALUE>a</VALUE>"),
      floods("a million attributes of one element", 0, 256, "<VALUE ", "ID=\"\" ", "/>"),
      floods("a million unknown attributes of one element", 0, 512, "<VALUE ", "X=\"\" ", "/>"),
      floods("a million attributes without a value", 0, 64, "<VALUE ", "ID ", "/>"),
      floods("a million comments", 0, 64, "", "<!---->", "<VALUE/>"),
      floods("a million beginnings of comments", 5002, 64, "", "<!--"),
      floods("a million character data sections", 0, 64, "", "<![CDATA[]]>", "<VALUE/>"),
      floods("a million beginnings of character data", 5002, 64, "", "<![CDATA["),
      floods("a million quotes in a text", 0, 64, "<VALUE>", "\"", "</VALUE>"),
      floods("a million tags within quotes", 0, 64, "<VALUE>\"", "<VALUE>", "\"</VALUE>"),
      floods("a million processing instructions", 5002, 64, "", "<?php ?>"),
      floods("a million signs that open a tag", 5002, 64, "", "<"),
      floods("a million signs that close a tag", 0, 64, "", ">"),
      sends(
          "a name of a megabyte", 5002,
          [] { return opening + "<" + std::string(million, 'N') + ">" + closing; }, 16, unknown),
      sends(
          "a text of ten megabytes", 0,
          [] {
            return opening + "<VALUE>" + std::string(10 * million, 't') + "</VALUE>" + closing;
          },
          128),
      sends("entities that would make 10^30 bytes", 0, with_entities()),
      sends("an entity from a file", 0,
            "<?xml version=\"1.0\"?><!DOCTYPE CIM [<!ENTITY a SYSTEM \"file:///etc/passwd\">]>"
            "<CIM CIMVERSION=\"2.0\"><VALUE>&a;</VALUE></CIM>"),
      sends("a document type within the document", 5002,
            opening + "<!DOCTYPE CIM [<!ENTITY a \"b\">]>" + closing, unknown),
      sends("a quote that is never closed", 5002, opening + "<VALUE>\"</VALUE>" + closing,
            "findNextElement: Missing correspending keyword </CIM>"),
      sends("an apostrophe in a text", 5002, opening + "<VALUE>it's</VALUE>" + closing),
      sends("an attribute that is never closed", 5002, opening + "<VALUE ID=\"1>" + closing),
      sends("a comment that is never closed", 5002, opening + "<!-- " + closing),
      sends("an element that is never closed", 5002, opening + "<VALUE>1" + closing, lost_end),
      sends("elements that overlap", 5002,
            opening + "<VALUE><INSTANCE></VALUE></INSTANCE>" + closing),
      sends("a document in UTF-16", 5002, in_utf_16(good_document)),
      sends("a document that claims UTF-16", 0,
            "<?xml version=\"1.0\" encoding=\"utf-16\"?>" + good_document.substr(38)),
      sends("bytes that are no UTF-8", 0, opening + "<VALUE>a\xC3\x28\xFF</VALUE>" + closing),
      sends("a byte order mark", 0, "\xEF\xBB\xBF" + good_document),
      sends("a zero within its document", 5002,
            opening + std::string("<VALUE>\0</VALUE>", 16) + closing),
      sends("two documents", 0, good_document + good_document),
      sends("a document in another one", 0, opening + opening + closing + closing),
      sends("an empty document", 0, opening + closing),
      sends("a web page", 5002, "<!DOCTYPE html><html><body>It works!</body></html>"),
      sends("a million blanks", 5002, [] { return std::string(million, ' '); }),
      sends("an error without a code", 1001, with_error("DESCRIPTION=\"x\"")),
      sends("an error with the code 0", 1001, with_error("CODE=\"0\" DESCRIPTION=\"x\"")),
      sends("an error with a negative code", 1001,
            with_error("CODE=\"-2147483649\" DESCRIPTION=\"x\"")),
      sends("an error with a code beyond every number", 2147483647,
            with_error("CODE=\"" + std::string(1000, '9') + "\" DESCRIPTION=\"x\"")),
      sends("an error with formats in its text", 6,
            with_error("CODE=\"6\" DESCRIPTION=\"%s%n%1%%2%%999999999s\""),
            "ErrCode:6 %s%n%1%%2%%999999999s"),
      sends("an error with a text of a megabyte", 6,
            [] {
              return with_error("CODE=\"6\" DESCRIPTION=\"" + std::string(million, 'd') + "\"");
            }),
      sends(
          "a million errors", 6,
          [] { return error_document(repeated(million, "<ERROR CODE=\"6\" DESCRIPTION=\"x\"/>")); },
          512),
      sends("an answer to another message", 0,
            opening + "<MESSAGE ID=\"4711\" PROTOCOLVERSION=\"9.9\"></MESSAGE>" + closing),
      sends("a request instead of an answer", 0,
            opening +
                "<MESSAGE ID=\"1\" PROTOCOLVERSION=\"1.0\"><SIMPLEREQ><IMETHODCALL "
                "NAME=\"DeleteClass\"></IMETHODCALL></SIMPLEREQ></MESSAGE>" +
                closing),
  };
  return all;
}
