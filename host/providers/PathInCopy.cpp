#include "host/providers/PathInCopy.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string_view>
#include <vector>

namespace emstatus::host {
namespace {

constexpr int kMostLinks = 40;

// Puts the parts of a path on a stack, the first one on top.
void Push(std::vector<std::string>& parts, std::string_view path) {
  while (!path.empty()) {
    const std::size_t slash = path.rfind('/');
    const std::string_view part = path.substr(slash == std::string_view::npos ? 0 : slash + 1);
    if (!part.empty() && part != ".") {
      parts.emplace_back(part);
    }
    path = path.substr(0, slash == std::string_view::npos ? 0 : slash);
  }
}

}  // namespace

FileResult<std::string> PathInCopy(const std::string& root, const std::string& path, bool followLast) {
  std::vector<std::string> rest;
  Push(rest, path);
  std::string done;
  for (int links = 0; !rest.empty();) {
    const std::string part = std::move(rest.back());
    rest.pop_back();
    if (part == "..") {
      done.resize(done.empty() ? 0 : done.rfind('/'));
      continue;
    }
    const std::string next = done + "/" + part;
    std::array<char, PATH_MAX> target{};
    const bool mayBeLink = followLast || !rest.empty();
    const ssize_t size = mayBeLink ? readlink((root + next).c_str(), target.data(), target.size()) : -1;
    if (size >= 0) {
      if (++links > kMostLinks) {
        return {{}, ELOOP};
      }
      const std::string_view text(target.data(), static_cast<std::size_t>(size));
      Push(rest, text);
      done = text.starts_with('/') ? "" : done;
      continue;
    }
    // Whoever opens a last part that is not there, is told.
    if (mayBeLink && errno != EINVAL && !(errno == ENOENT && rest.empty())) {
      return {{}, errno};
    }
    done = next;
  }
  return {done.empty() ? "/" : done, 0};
}

}  // namespace emstatus::host
