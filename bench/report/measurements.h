#pragma once

#include <istream>
#include <map>
#include <optional>
#include <string>
#include <vector>

// The lines that the benchmark programs printed, see results.h.
class Measurements {
 public:
  explicit Measurements(std::istream& lines);

  std::optional<double> find(const std::string& subject, const std::string& engine,
                             const std::string& figure) const;
  // The quotient of two figures; nothing when one is missing.
  static std::optional<double> ratio(std::optional<double> over, std::optional<double> under);
  static std::optional<double> inverse(std::optional<double> value) { return ratio(1, value); }
  // How many times as long as the first contender of its race `engine` took.
  std::optional<double> time_ratio(const std::string& subject, const std::string& engine) const;
  // What follows `prefix` in the subjects that begin with it, in the order of measuring.
  std::vector<std::string> subjects(const std::string& prefix) const;

 private:
  std::map<std::string, double> values_;
  std::vector<std::string> subjects_;
};
