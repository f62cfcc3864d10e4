#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <optional>
#include <string>

#include "host/socket/FileDescriptor.h"
#include "host/socket/Protocol.h"

namespace emstatus::host {

/// One connection to the server: bytes in, lines out, neither without bounds. [server's thread]
class ServedClient {
 public:
  using Clock = std::chrono::steady_clock;

  /// What the client is waiting for, beside the lines that are on their way to it.
  enum class State {
    /// Nothing: it may send a request.
    Asking,
    /// The first report.
    AwaitsReport,
    /// Each event as it comes.
    Follows,
    /// The end, when all has been written.
    Leaving,
  };

  /// `user` is who connected.
  ServedClient(FileDescriptor socket, uid_t user);

  /// Takes what has come. False when the connection is broken.
  bool Receive();

  /// The next whole line without its line feed; what stands before the end of the input counts as one.
  std::optional<std::string> TakeLine();
  bool LineIsTooLong() const { return input_.size() >= kLongestRequest; }
  bool InputHasEnded() const { return inputEnded_; }

  void Add(SharedLine line) { output_.push_back(std::move(line)); }
  std::size_t Waiting() const { return output_.size(); }
  /// Gives up what waits for a client that does not take it; Flush() then tells of a broken connection.
  void Abandon();
  /// Writes as much as the client takes now. False when the connection is broken.
  bool Flush();

  /// What to poll() for.
  short Interest() const;
  /// When it has been silent, or has not taken what is written, for too long. None while it may be silent.
  std::optional<Clock::time_point> Deadline(Clock::duration idle, Clock::duration stalled) const;

  int Descriptor() const { return socket_.Number(); }
  uid_t User() const { return user_; }

  State state = State::Asking;

 private:
  FileDescriptor socket_;
  uid_t user_;
  std::string input_;
  bool inputEnded_ = false;
  bool abandoned_ = false;
  std::deque<SharedLine> output_;
  /// Bytes of the first line that are written.
  std::size_t written_ = 0;
  /// When it last sent a request or took something.
  Clock::time_point lastMove_ = Clock::now();
};

}  // namespace emstatus::host
