#pragma once

#include <cstddef>
#include <memory>
#include <string>

/// What passes over the socket of a running emhost: lines of JSON, described in docs/HOST.md.
namespace emstatus::host {

/// Counts up when an old client could no longer understand a reply.
inline constexpr int kProtocolVersion = 1;

/// Longest request in bytes, line feed included.
inline constexpr std::size_t kLongestRequest = 4096;

/// A finished line with its line feed, shared by all who are still writing it.
using SharedLine = std::shared_ptr<const std::string>;

}  // namespace emstatus::host
