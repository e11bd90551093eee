#pragma once

#include <string>
#include <vector>

#include "zuCIM/class.h"
#include "zuCIM/element.h"

// The extraction written down step by step, with CIMelement::redirect_chain for every move: slow,
// and the judge of the real one.
struct JudgedExtraction {
  // What the extraction returns: the element that is the result, null for none.
  zuCIM::CIMelement* element = nullptr;
  // What ExtractClassDefinition returns.
  int code = 0;
  // The texts of the traces.
  std::vector<std::string> traces;
};

JudgedExtraction judge_instance_names(zuCIM::CIMelement* tree, zuCIM::CIMclass& entry,
                                      const std::string& host);
JudgedExtraction judge_instances(zuCIM::CIMelement* tree, zuCIM::CIMclass& entry,
                                 const std::string& host);
JudgedExtraction judge_named_instances(zuCIM::CIMelement& answer, zuCIM::CIMclass& entry,
                                       const std::string& host);
JudgedExtraction judge_class_definition(zuCIM::CIMelement& answer, zuCIM::CIMclass& entry,
                                        const std::string& host);
