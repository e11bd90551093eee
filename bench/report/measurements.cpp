#include "measurements.h"

#include <algorithm>
#include <sstream>

Measurements::Measurements(std::istream& lines) {
  std::string line;
  while (std::getline(lines, line)) {
    std::istringstream columns(line);
    std::string subject;
    std::string engine;
    std::string figure;
    double value = 0;
    std::getline(columns, subject, '\t');
    std::getline(columns, engine, '\t');
    std::getline(columns, figure, '\t');
    if (!(columns >> value)) continue;
    values_[subject + '\t' + engine + '\t' + figure] = value;
    if (std::find(subjects_.begin(), subjects_.end(), subject) == subjects_.end())
      subjects_.push_back(subject);
  }
}

std::optional<double> Measurements::find(const std::string& subject, const std::string& engine,
                                         const std::string& figure) const {
  const auto found = values_.find(subject + '\t' + engine + '\t' + figure);
  if (found == values_.end()) return std::nullopt;
  return found->second;
}

std::optional<double> Measurements::ratio(std::optional<double> over, std::optional<double> under) {
  if (!over || !under || *under == 0) return std::nullopt;
  return *over / *under;
}

std::optional<double> Measurements::time_ratio(const std::string& subject,
                                               const std::string& engine) const {
  return find(subject, engine, "ratio");
}

std::vector<std::string> Measurements::subjects(const std::string& prefix) const {
  std::vector<std::string> names;
  for (const std::string& subject : subjects_)
    if (subject.starts_with(prefix)) names.push_back(subject.substr(prefix.size()));
  return names;
}
