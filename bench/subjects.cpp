#include "subjects.h"

#include "documents.h"

namespace bench {
namespace {

constexpr std::size_t mebibyte = 1024 * 1024;

Subject deep(const char* name, std::size_t depth) {
  return {name, [depth] { return nested(depth); }, 1, depth};
}

// These are nested as deep as their size allows.
Subject hostile(const char* name, std::string (*make)(std::size_t)) {
  return {name, [make] { return make(mebibyte); }, 1, mebibyte / 100};
}

}  // namespace

const std::vector<Subject>& subjects() {
  static const std::vector<Subject> all{{"small", [] { return small_instances(10000); }, 10000},
                                        {"typical", [] { return typical_instances(1000); }, 1000},
                                        {"names", [] { return instance_names(100000); }, 100000},
                                        {"class", class_definition},
                                        {"long-text", [] { return long_text(10 * mebibyte); }},
                                        deep("deep-100", 100),
                                        deep("deep-1000", 1000),
                                        deep("deep-10000", 10000),
                                        deep("deep-100000", 100000),
                                        deep("deep-1000000", 1000000),
                                        {"friendly", [] { return typical_instances(383); }, 383},
                                        hostile("stray-quotes", stray_quotes),
                                        hostile("lookalikes", lookalikes),
                                        hostile("comments", comments),
                                        hostile("unclosed", unclosed)};
  return all;
}

}  // namespace bench
