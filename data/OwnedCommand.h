#pragma once

#include <emstatus/HostCommand.h>

#include <cstdint>

#include "data/OwnedValue.h"

namespace emstatus {

/// What a command addresses: its members "OC", "OE", "OI" and "CA".
struct CommandAddress {
  std::uint32_t operation = 0;
  std::uint32_t extension = 0;
  std::uint32_t object = 0;
  std::uint32_t cabinet = 0;
};

/// A HostCommand that releases its document; same layout, move-only. [one thread at a time]
/// The constructors and AddData throw std::bad_alloc when memory runs out.
class OwnedCommand : public HostCommand {
 public:
  /// {"SIP":{"CMD":[{}]}}
  OwnedCommand();
  /// The same with "OC", "OE", "OI" and "CA" in this order.
  explicit OwnedCommand(const CommandAddress& address);
  OwnedCommand(OwnedCommand&& other) noexcept;
  OwnedCommand& operator=(OwnedCommand&& other) noexcept;
  OwnedCommand(const OwnedCommand&) = delete;
  OwnedCommand& operator=(const OwnedCommand&) = delete;
  ~OwnedCommand();

  /// Sets "DA", appended after what is there; leaves "ST" alone.
  OwnedCommand& AddData(OwnedValue data);
};

static_assert(sizeof(OwnedCommand) == sizeof(HostCommand));

}  // namespace emstatus
