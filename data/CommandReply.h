#pragma once

#include <emstatus/HostCommand.h>

#include <cstdint>
#include <optional>
#include <string>

namespace emstatus {

/// What a host answered to a command.
struct Reply {
  /// The status says that the command was carried out. Without it there is neither number nor text.
  bool completed = false;
  /// Data that is a number or raw bytes.
  std::optional<std::int32_t> number;
  /// Data that is a string, up to its first zero byte.
  std::optional<std::string> text;
  /// All 32 bits of "ST", 22 when the answer has none.
  std::uint32_t status = 0;
};

/// Reads the current command as an answer. Statuses 0, 12, 21 and 255 mean completed. [any thread]
Reply ReadReply(const HostCommand& command);

}  // namespace emstatus
