#include "results.h"

#include <cstdio>

namespace bench {

void add_result(const std::string& subject, const std::string& engine, const std::string& figure,
                double value) {
  std::printf("%s\t%s\t%s\t%.9g\n", subject.c_str(), engine.c_str(), figure.c_str(), value);
  std::fflush(stdout);
}

}  // namespace bench
