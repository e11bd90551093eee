#include "options.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>

namespace simulator {

namespace {

// The data directory of the build tree if this is the program of the build tree, else the
// installed one, found from where the program lies.
std::string default_data_directory() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const auto installed =
      (program.parent_path().parent_path() / ZUCIM_SIMULATOR_DATA_INSTALLED).lexically_normal();
  if (!error && std::filesystem::is_directory(installed, error)) return installed.string();
  return ZUCIM_SIMULATOR_DATA_SOURCE;
}

std::pair<std::string, std::size_t> parse_growth(const std::string& text) {
  const std::size_t equals = text.find('=');
  std::size_t count = 0;
  const char* end = text.data() + text.size();
  const char* digits = text.data() + std::min(equals, text.size() - 1) + 1;
  const auto [stop, error] = std::from_chars(digits, end, count);
  if (equals == 0 || equals == std::string::npos || error != std::errc() || stop != end) {
    throw CLI::ValidationError("--instances", "\"" + text + "\" is not CLASS=NUMBER");
  }
  return {text.substr(0, equals), count};
}

// The fastest that delivery can be expected to keep up with.
constexpr double most_per_second = 1000;
// About one a day: slower ones would never be noticed.
constexpr double least_per_second = 0.00001;

double parse_rate(const std::string& text) {
  const std::size_t length = text.find('/');
  const bool is_per_second = length != std::string::npos && text.substr(length) == "/s";
  double rate = 0;
  const char* end = text.data() + std::min(length, text.size());
  const auto [stop, error] = std::from_chars(text.data(), end, rate, std::chars_format::fixed);
  const bool is_number = error == std::errc() && stop == end;
  if (!is_per_second || !is_number || !(rate >= least_per_second && rate <= most_per_second)) {
    throw CLI::ValidationError("--indications",
                               "\"" + text + "\" is not N/s with N from 0.00001 to 1000");
  }
  return rate;
}

// What stands on the command line in a form of its own.
struct Raw {
  std::vector<std::string> growth;
  std::string rate;
};

void declare(CLI::App& app, Options& options, Raw& raw) {
  app.add_option("--address", options.address, "address to listen on")->capture_default_str();
  app.add_option("--port", options.port, "port to listen on; 0 lets the system pick one")
      ->check(CLI::Range(0, 65535))
      ->capture_default_str();
  auto* https = app.add_flag("--https", options.https, "speak HTTPS");
  auto* certificate =
      app.add_option("--certificate", options.certificate, "the server's certificate (PEM)")
          ->check(CLI::ExistingFile)
          ->needs(https);
  auto* key = app.add_option("--key", options.key, "the private key of the certificate (PEM)")
                  ->check(CLI::ExistingFile)
                  ->needs(https);
  https->needs(certificate)->needs(key);
  app.add_option("--client-ca", options.client_ca,
                 "demand client certificates signed by this CA (PEM)")
      ->check(CLI::ExistingFile)
      ->needs(https);
  app.add_option("--user", options.user, "user name to demand")->capture_default_str();
  app.add_option("--password", options.password, "password to demand")
      ->envname("ZUCIM_SIMULATOR_PASSWORD")
      ->capture_default_str();
  app.add_flag("--anonymous", options.anonymous, "serve everyone, without user and password");
  app.add_option("--data", options.data, "directory with the declaration files")
      ->check(CLI::ExistingDirectory)
      ->capture_default_str();
  app.add_option("--instances", raw.growth,
                 "CLASS=N adds N generated instances of a class (may be given again)")
      ->take_all();
  app.add_option("--indications", raw.rate,
                 "N/s sends so many test indications a second to those who subscribed");
  app.add_flag("--short-null", options.style.short_null,
               "write properties without a value as one empty-element tag");
  app.add_flag("--both-embedded", options.style.both_embedded,
               "write the attribute EMBEDDEDOBJECT beside EmbeddedObject");
  app.add_flag("--verbose", options.verbose,
               "log each request and each delivery on standard error");
}

}  // namespace

CommandLine read_command_line(int argc, char** argv) {
  CommandLine result;
  Raw raw;
  result.options.data = default_data_directory();
  CLI::App app("A CIM server (CIM operations over HTTP) for tests and demonstrations",
               "zucim-simulator");
  app.option_defaults()->take_last();
  declare(app, result.options, raw);
  try {
    app.parse(argc, argv);
    for (const auto& each : raw.growth) result.options.growth.push_back(parse_growth(each));
    if (app.count("--indications") > 0)
      result.options.indications_per_second = parse_rate(raw.rate);
  } catch (const CLI::ParseError& error) {
    result.go_on = false;
    result.exit_status = app.exit(error);
  }
  return result;
}

}  // namespace simulator
