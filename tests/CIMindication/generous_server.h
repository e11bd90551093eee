#pragma once

#include <string>

#include "CIMindication/interop_answers.h"
#include "support/http_answer.h"
#include "support/scripted_server.h"

// The answer of a server that makes and deletes whatever it is asked to and holds nothing.
inline std::string generous_answer(const std::string& request) {
  std::string answer = method_answer("");
  if (request.find("NAME=\"EnumerateInstanceNames\"") != std::string::npos) answer = none_listed;
  for (const std::string& class_name : class_names)
    if (request.find("<INSTANCE CLASSNAME=\"" + class_name) != std::string::npos)
      answer = return_value(name_in(class_name));
  return last_http_answer(answer);
}

// Answers every connection so.
inline Scripts generous_scripts() {
  return {{{script::ReadRequest{}, script::SendMadeFromRequest{&generous_answer}}}, true};
}
