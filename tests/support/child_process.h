#pragma once

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

// A started program whose output goes to files without a name. Ended by SIGKILL if it is still
// there when this object goes. If the test program dies, the child does too.
class ChildProcess {
 public:
  // Throws std::runtime_error if the program cannot be started.
  explicit ChildProcess(const std::vector<std::string>& command);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // The next line of standard output, waited for; without the line feed. Empty at its end.
  std::string read_line();

  // What is left of standard output up to its end.
  std::string read_rest();

  // What was written on standard error up to now.
  std::string standard_error() const;

  // Sends a signal.
  void send(int signal) const;

  // Waits for the end; the exit status, or 128 + signal.
  int wait();

  pid_t id() const { return id_; }

 private:
  struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, CloseFile>;

  pid_t id_ = -1;
  int status_ = -1;
  File out_;  // the reading end of a pipe
  File err_;  // a file without a name
};
