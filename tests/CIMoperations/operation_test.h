#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "CIMoperations/recording_clock.h"
#include "CIMoperations/server_context.h"
#include "CIMoperations/tree_text.h"
#include "support/http_answer.h"
#include "support/scripted_server.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

inline constexpr const char* operations_source = "Src/CIMoperations";

// A context and a server that gives the answers one after the other.
class OperationTest : public testing::Test {
 protected:
  // Starts the server and the context, which tries nothing again in its first operation.
  void serve(const std::vector<std::string>& answers) {
    Scripts scripts;
    for (const std::string& answer : answers) scripts.in_order.push_back(answering(answer));
    serve_scripts(scripts);
    without_retries();
  }

  // The same with any script, and with retries.
  void serve_scripts(const Scripts& scripts) {
    server_ = std::make_unique<ScriptedServer>(scripts);
    context_ = std::make_unique<ServerContext>(server_->address(), server_->port_text());
  }

  static script::Steps answering(const std::string& answer) {
    return {script::ReadRequest{}, script::Send{last_http_answer(answer)}};
  }

  // Keeps the next operation from trying again what fails.
  void without_retries() { context_->SetExtraTimeOut(-1); }

  zuCIM::CIMclass& entry() { return *context_->currentClass; }

  // The body of the n-th request.
  std::string body(std::size_t n = 0) { return body_of(server_->requests().at(n)); }

  // What the n-th request carries between `begin` and `end`.
  std::string between(const std::string& begin, const std::string& end, std::size_t n) {
    const std::string text = body(n);
    const std::size_t found = text.find(begin);
    if (found == std::string::npos) return "nothing: " + text;
    const std::size_t from = found + begin.size();
    return text.substr(from, text.find(end, from) - from);
  }

  // What the n-th request of an intrinsic method carries after the namespace.
  std::string parameters(std::size_t n = 0) {
    return between("</LOCALNAMESPACEPATH>\n", "</IMETHODCALL>", n);
  }

  // The name of the intrinsic method in the n-th request.
  std::string method(std::size_t n = 0) { return between("<IMETHODCALL NAME=\"", "\"", n); }

  // The first trace must be the operation's name.
  void expect_entry_trace(const std::string& operation) {
    const std::string text = "[127.0.0.2] " + operation;
    EXPECT_EQ(recorder_.count(zuCIM::trace_level::progress, operations_source, text), 1);
    EXPECT_EQ(recorder_.lines().at(0).text, text);
  }

  int count_traces(unsigned level, const std::string& text) {
    return recorder_.count(level, operations_source, text);
  }

  // An operation has just refused its arguments: `text` says why, and nothing was sent.
  void expect_refusal(const std::string& text) {
    EXPECT_EQ(context_->ChkCimStatus(), 1001);
    EXPECT_EQ(context_->request, "");
    EXPECT_EQ(context_->curl, nullptr);
    EXPECT_EQ(count_traces(zuCIM::trace_level::warning, "[127.0.0.2] " + text), 1);
    EXPECT_EQ(server_->connection_count(), 0U);
  }

  RecordingClock clock_;
  TraceRecorder recorder_{~zuCIM::trace_level::detail};
  std::unique_ptr<ScriptedServer> server_;
  std::unique_ptr<ServerContext> context_;
};

// Parameters as they stand in a request to the class CIM_A.
inline const std::string class_name_parameter =
    "<IPARAMVALUE NAME=\"ClassName\"><CLASSNAME NAME=\"CIM_A\"/></IPARAMVALUE>\n";
inline const std::string property_list_parameter =
    "<IPARAMVALUE NAME=\"PropertyList\">\n<VALUE.ARRAY>\n<VALUE>Name</VALUE>\n</VALUE.ARRAY>\n"
    "</IPARAMVALUE>\n";

inline std::string boolean_parameter(const std::string& name, const std::string& value) {
  return "<IPARAMVALUE NAME=\"" + name + "\"><VALUE>" + value + "</VALUE>\n</IPARAMVALUE>\n";
}

// The list that property_list_parameter comes from.
inline zuCIM::CIMarray name_list() {
  zuCIM::CIMarray names;
  names.putargv("Name", -1, 15);
  return names;
}

// An instance name with one key, and the parameter that it becomes.
inline const std::string name_tree =
    "INSTANCENAME CLASSNAME=CIM_A\n KEYBINDING NAME=Id\n  KEYVALUE [1]\n";
inline const std::string name_text =
    "<INSTANCENAME CLASSNAME=\"CIM_A\">\n"
    "<KEYBINDING NAME=\"Id\">\n"
    "<KEYVALUE>1</KEYVALUE>\n"
    "</KEYBINDING>\n"
    "</INSTANCENAME>\n";
inline const std::string instance_name_parameter =
    "<IPARAMVALUE NAME=\"InstanceName\">\n" + name_text + "</IPARAMVALUE>\n";

// A tree made of text.
struct Tree : zuCIM::CIMelement {
  explicit Tree(const std::string& text) { build_tree(*this, text); }
};

// A tree that the generator cannot write: its last element belongs elsewhere.
inline void break_tree(zuCIM::CIMelement& root) {
  zuCIM::CIMelement* const last = root.makeNextElement();
  last->name = zuCIM::known_cim_elements[zuCIM::elem::VALUE];
  static zuCIM::CIMelement elsewhere;
  last->parent = &elsewhere;
}

// Answers.
inline const std::string empty_answer = return_value("");
// To an operation that returns nothing.
inline const std::string void_answer = method_answer("");
inline const std::string error_answer =
    method_answer("<ERROR CODE=\"6\" DESCRIPTION=\"CIM_ERR_NOT_FOUND\"/>\n");
