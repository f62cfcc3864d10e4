#include "host/socket/StatusClient.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include "host/socket/Protocol.h"
#include "host/socket/SocketPath.h"

namespace emstatus::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kReadAtOnce = 65536;
constexpr std::chrono::milliseconds kConnectGap{20};

std::string ReasonOf(int error) {
  return std::generic_category().message(error);
}

std::string SecondsText(std::chrono::milliseconds time) {
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(time).count();
  return std::to_string(seconds) + (seconds == 1 ? " second" : " seconds");
}

}  // namespace

StatusClient::StatusClient(std::string path, FileDescriptor socket, std::chrono::milliseconds timeout)
    : path_(std::move(path)), socket_(std::move(socket)), timeout_(timeout) {}

std::optional<StatusClient> StatusClient::Connect(const std::string& path,
                                                  std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  const sockaddr_un address = SocketAddress(path);
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket) {
    throw SocketError("cannot make a socket: " + ReasonOf(errno));
  }
  while (connect(socket.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    if (errno == ENOENT || errno == ECONNREFUSED || errno == ENOTDIR) {
      return std::nullopt;
    }
    // Nothing tells when there is room among those who wait to be accepted.
    if (errno != EAGAIN && errno != EINTR) {
      throw SocketError("cannot connect to " + path + ": " + ReasonOf(errno));
    }
    if (Clock::now() >= deadline) {
      throw SocketError("the emhost at " + path + " took no connection within " + SecondsText(timeout) + ".");
    }
    std::this_thread::sleep_for(kConnectGap);
  }
  return StatusClient(path, std::move(socket), timeout);
}

SocketError StatusClient::NoAnswer() const {
  return SocketError("the emhost at " + path_ + " did not answer within " + SecondsText(timeout_) +
                     ". It may still be at its first scan; a longer --timeout waits for it, --own-scan does "
                     "without it.");
}

/// False when `stop` is readable.
bool StatusClient::WaitFor(short events, std::optional<Clock::time_point> deadline, int stop) {
  for (;;) {
    const auto rest = deadline ? std::chrono::ceil<std::chrono::milliseconds>(*deadline - Clock::now())
                               : std::chrono::milliseconds(-1);
    if (deadline && rest.count() <= 0) {
      throw NoAnswer();
    }
    std::array<pollfd, 2> polled{{{socket_.Number(), events, 0}, {stop, POLLIN, 0}}};
    const int ready = poll(polled.data(), polled.size(), int(rest.count()));
    if (ready > 0) {
      return polled[1].revents == 0;
    }
    if (ready < 0 && errno != EINTR) {
      throw SocketError("cannot wait for an answer: " + ReasonOf(errno));
    }
  }
}

void StatusClient::Send(std::string_view text) {
  const auto deadline = Clock::now() + timeout_;
  while (!text.empty()) {
    const ssize_t count = send(socket_.Number(), text.data(), text.size(), MSG_NOSIGNAL);
    if (count >= 0) {
      text.remove_prefix(std::size_t(count));
    } else if (errno == EPIPE || errno == ECONNRESET) {
      // It may have said why before it closed.
      return;
    } else if (errno != EAGAIN && errno != EINTR) {
      throw SocketError("cannot ask the emhost at " + path_ + ": " + ReasonOf(errno));
    } else {
      WaitFor(POLLOUT, deadline, -1);
    }
  }
}

std::optional<std::string> StatusClient::TakeLine() {
  const std::size_t end = input_.find('\n', searched_);
  if (end == std::string::npos) {
    searched_ = input_.size();
    return std::nullopt;
  }
  std::string line = input_.substr(0, end);
  input_.erase(0, end + 1);
  searched_ = 0;
  return line;
}

std::optional<std::string> StatusClient::ReadLine(bool forEver, int stop) {
  const auto deadline = forEver ? std::nullopt : std::optional(Clock::now() + timeout_);
  for (;;) {
    if (auto line = TakeLine()) {
      return line;
    }
    if (input_.size() > kLongestReply) {
      throw SocketError("what answers at " + path_ + " sends a line without end; it is no emhost.");
    }
    if (!WaitFor(POLLIN, deadline, stop)) {
      return std::nullopt;
    }
    const std::size_t before = input_.size();
    input_.resize(before + kReadAtOnce);
    const ssize_t count = recv(socket_.Number(), input_.data() + before, kReadAtOnce, 0);
    input_.resize(before + std::size_t(std::max<ssize_t>(count, 0)));
    if (count == 0 || (count < 0 && errno == ECONNRESET)) {
      return std::nullopt;
    }
    if (count < 0 && errno != EAGAIN && errno != EINTR) {
      throw SocketError("cannot read from the emhost at " + path_ + ": " + ReasonOf(errno));
    }
  }
}

nlohmann::ordered_json StatusClient::Ask(const nlohmann::ordered_json& request) {
  Send(request.dump() + "\n");
  const auto line = ReadLine();
  if (!line) {
    throw SocketError("the emhost at " + path_ + " closed the connection without an answer.");
  }
  auto reply = nlohmann::ordered_json::parse(*line, nullptr, false);
  if (!reply.is_object() || !reply.contains("emhost") || !reply.contains("protocol")) {
    throw SocketError("what answers at " + path_ + " is no emhost; name another socket with --socket.");
  }
  if (reply["protocol"] != kProtocolVersion) {
    throw SocketError("the emhost at " + path_ + " (version " + reply["emhost"].dump() +
                      ") speaks protocol " + reply["protocol"].dump() + ", this one protocol " +
                      std::to_string(kProtocolVersion) + ". Use commands of its own version, or --own-scan.");
  }
  if (const auto error = reply.find("error"); error != reply.end()) {
    throw SocketError("the emhost at " + path_ +
                      " refuses: " + (error->is_string() ? error->get<std::string>() : error->dump()) + ".");
  }
  return reply;
}

}  // namespace emstatus::host
