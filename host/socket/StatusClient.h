#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/socket/FileDescriptor.h"

namespace emstatus::host {

/// Why a running emhost gave no answer, for people.
class SocketError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A connection to a running emhost. Every wait ends with the time-out, which is that of one request.
/// [one thread]
class StatusClient {
 public:
  /// The longest line that is read.
  static constexpr std::size_t kLongestReply = std::size_t(64) << 20;

  /// Nothing when nobody listens at `path`. Throws a SocketError when it may not be used, or when whoever
  /// listens takes no connection within `timeout`.
  static std::optional<StatusClient> Connect(const std::string& path, std::chrono::milliseconds timeout);

  /// Sends a request, {"get": ...}, and reads the reply's first line: its members, "error" not among them.
  /// Throws a SocketError when there is none in time, when it is none of an emhost, or one of another
  /// protocol, or when the request was refused.
  nlohmann::ordered_json Ask(const nlohmann::ordered_json& request);

  /// The next line, as it is. Nothing at the end of the connection, and when `stop` becomes readable. Waits
  /// for ever when `forEver`, else throws a SocketError when none comes in time.
  std::optional<std::string> ReadLine(bool forEver = false, int stop = -1);

  const std::string& Path() const { return path_; }

 private:
  StatusClient(std::string path, FileDescriptor socket, std::chrono::milliseconds timeout);
  void Send(std::string_view text);
  std::optional<std::string> TakeLine();
  bool WaitFor(short events, std::optional<std::chrono::steady_clock::time_point> deadline, int stop);
  SocketError NoAnswer() const;

  std::string path_;
  FileDescriptor socket_;
  std::chrono::milliseconds timeout_;
  std::string input_;
  /// So far there is no line feed in the input.
  std::size_t searched_ = 0;
};

}  // namespace emstatus::host
