#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "host/machine/Request.h"

namespace emstatus::host {

/// Tells requests apart, as a key of maps.
struct RequestKey {
  std::uint32_t code = 0;
  std::uint32_t extension = 0;
  std::uint32_t object = 0;
  std::uint32_t cabinet = 0;
  std::string data;

  explicit RequestKey(const Request& request);

  friend auto operator<=>(const RequestKey&, const RequestKey&) = default;
};

/// "OC-OI-OE-CA" in hexadecimal, as in the keys of the tree. [any thread]
std::string PlaceText(const Request& request);

/// The way back, without data; nothing when this is no such text. [any thread]
std::optional<Request> ReadPlace(std::string_view text);

}  // namespace emstatus::host
