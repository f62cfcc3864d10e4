#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {

/// The program as people run it, with its standard output and error in one pipe.
class EmhostProcess {
 public:
  explicit EmhostProcess(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), EMHOST_PROGRAM);
    // Its usual socket is this test program's own, and not that of an emhost at work on this machine.
    static const TemporaryDirectory sockets;
    std::array<int, 2> pipe{};
    EXPECT_EQ(pipe2(pipe.data(), O_CLOEXEC), 0);
    id_ = fork();
    if (id_ == 0) {
      std::vector<char*> raw;
      for (std::string& argument : arguments) {
        raw.push_back(argument.data());
      }
      raw.push_back(nullptr);
      setenv("RUNTIME_DIRECTORY", sockets.Path().c_str(), 1);
      // Whoever runs the tests may ignore it (nohup).
      signal(SIGHUP, SIG_DFL);
      dup2(pipe[1], STDOUT_FILENO);
      dup2(pipe[1], STDERR_FILENO);
      execv(raw[0], raw.data());
      _exit(127);
    }
    close(pipe[1]);
    output_ = pipe[0];
  }
  EmhostProcess(const EmhostProcess&) = delete;
  EmhostProcess& operator=(const EmhostProcess&) = delete;
  ~EmhostProcess() {
    close(output_);
    if (!ended_) {
      kill(id_, SIGKILL);
      waitpid(id_, nullptr, 0);
    }
  }

  /// Reads until `text` has been written, the program has ended, or it has been silent for long.
  bool WaitFor(const std::string& text) {
    std::array<char, 4096> bytes{};
    while (written_.find(text) == std::string::npos) {
      constexpr int kLongMs = 60000;
      pollfd descriptor{output_, POLLIN, 0};
      if (poll(&descriptor, 1, kLongMs) <= 0) {
        return false;
      }
      const ssize_t count = read(output_, bytes.data(), bytes.size());
      if (count <= 0) {
        return false;
      }
      written_.append(bytes.data(), std::size_t(count));
    }
    return true;
  }
  void Signal(int number) { kill(id_, number); }
  int ExitCode() {
    while (WaitFor(std::string("\0never", 6))) {
    }
    int status = 0;
    waitpid(id_, &status, 0);
    ended_ = true;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  const std::string& Written() const { return written_; }

 private:
  pid_t id_ = -1;
  int output_ = -1;
  bool ended_ = false;
  std::string written_;
};

}  // namespace emstatus::test
