#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

#include "support/run_program.h"

namespace {

constexpr int exec_failed = 127;

[[noreturn]] void become(const std::vector<char*>& arguments, int out, int err) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::dup2(out, STDOUT_FILENO);
  ::dup2(err, STDERR_FILENO);
  ::execvp(arguments.front(), arguments.data());
  ::_exit(exec_failed);
}

std::vector<char*> pointers(const std::vector<std::string>& command) {
  std::vector<char*> result;
  for (const std::string& each : command) result.push_back(const_cast<char*>(each.c_str()));
  result.push_back(nullptr);
  return result;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command) {
  std::array<int, 2> ends{};
  err_.reset(std::tmpfile());
  if (!err_ || ::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  out_.reset(::fdopen(ends[0], "r"));
  const std::vector<char*> arguments = pointers(command);
  id_ = ::fork();
  if (id_ == 0) become(arguments, ends[1], ::fileno(err_.get()));
  ::close(ends[1]);
  if (id_ < 0) throw std::runtime_error("cannot fork");
}

ChildProcess::~ChildProcess() {
  if (id_ > 0 && status_ < 0) {
    send(SIGKILL);
    wait();
  }
}

std::string ChildProcess::read_line() {
  std::string line;
  for (int c = std::fgetc(out_.get()); c != EOF && c != '\n'; c = std::fgetc(out_.get())) {
    line += static_cast<char>(c);
  }
  return line;
}

std::string ChildProcess::read_rest() {
  std::string text;
  std::array<char, 4096> buffer{};
  while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), out_.get())) {
    text.append(buffer.data(), count);
  }
  return text;
}

std::string ChildProcess::standard_error() const {
  std::string text;
  std::array<char, 4096> buffer{};
  ssize_t count = 0;
  while ((count = ::pread(::fileno(err_.get()), buffer.data(), buffer.size(),
                          static_cast<off_t>(text.size()))) > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return text;
}

void ChildProcess::send(int signal) const {
  ::kill(id_, signal);
}

int ChildProcess::wait() {
  if (status_ >= 0) return status_;
  int status = 0;
  while (::waitpid(id_, &status, 0) < 0 && errno == EINTR) {
  }
  status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return status_;
}

ProgramResult run_program(const std::vector<std::string>& command) {
  ChildProcess child(command);
  ProgramResult result;
  result.out = child.read_rest();
  result.exit_status = child.wait();
  result.err = child.standard_error();
  return result;
}
