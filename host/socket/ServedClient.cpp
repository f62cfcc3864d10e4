#include "host/socket/ServedClient.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

namespace emstatus::host {
namespace {

bool IsForNow(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

ServedClient::ServedClient(FileDescriptor socket, uid_t user) : socket_(std::move(socket)), user_(user) {}

bool ServedClient::Receive() {
  std::array<char, kLongestRequest> bytes{};
  const ssize_t count = recv(socket_.Number(), bytes.data(), bytes.size(), 0);
  if (count < 0) {
    return IsForNow(errno);
  }
  inputEnded_ = count == 0;
  input_.append(bytes.data(), std::size_t(count));
  return true;
}

std::optional<std::string> ServedClient::TakeLine() {
  const std::size_t end = input_.find('\n');
  if (end == std::string::npos && (!inputEnded_ || input_.empty())) {
    return std::nullopt;
  }
  std::string line = input_.substr(0, end);
  input_.erase(0, end == std::string::npos ? end : end + 1);
  lastMove_ = Clock::now();
  return line;
}

void ServedClient::Abandon() {
  output_.clear();
  abandoned_ = true;
}

bool ServedClient::Flush() {
  while (!output_.empty()) {
    const std::string& line = *output_.front();
    const ssize_t count =
        send(socket_.Number(), line.data() + written_, line.size() - written_, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0) {
      return IsForNow(errno);
    }
    lastMove_ = Clock::now();
    written_ += std::size_t(count);
    if (written_ == line.size()) {
      output_.pop_front();
      written_ = 0;
    }
  }
  return !abandoned_;
}

short ServedClient::Interest() const {
  if (!output_.empty()) {
    return POLLOUT;
  }
  return state == State::Asking && !inputEnded_ ? POLLIN : 0;
}

std::optional<ServedClient::Clock::time_point> ServedClient::Deadline(Clock::duration idle,
                                                                      Clock::duration stalled) const {
  if (!output_.empty()) {
    return lastMove_ + stalled;
  }
  return state == State::Asking ? std::optional(lastMove_ + idle) : std::nullopt;
}

}  // namespace emstatus::host
