#include "platform/FileDescriptor.h"

#include <cerrno>

namespace emstatus {

std::string FileDescriptor::ReadToEnd() const {
  constexpr std::size_t kStep = 65536;
  std::string text;
  for (;;) {
    const std::size_t before = text.size();
    text.resize(before + kStep);
    const ssize_t got = ::read(number_, text.data() + before, kStep);
    text.resize(before + (got > 0 ? static_cast<std::size_t>(got) : 0));
    if (got == 0 || (got < 0 && errno != EINTR)) return text;
  }
}

bool FileDescriptor::Write(std::string_view text) const {
  while (!text.empty()) {
    const ssize_t put = ::write(number_, text.data(), text.size());
    if (put < 0 && errno != EINTR) return false;
    if (put > 0) text.remove_prefix(static_cast<std::size_t>(put));
  }
  return true;
}

}  // namespace emstatus
