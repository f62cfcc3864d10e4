#include "host/recording/RequestKey.h"

#include <array>
#include <charconv>
#include <cstdio>

namespace emstatus::host {

RequestKey::RequestKey(const Request& request)
    : code(request.code),
      extension(request.extension),
      object(request.object),
      cabinet(request.cabinet),
      data(request.data ? "=" + request.data->dump(-1, ' ', true, nlohmann::json::error_handler_t::replace)
                        : std::string()) {}

std::string PlaceText(const Request& request) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04X-%04X-%04X-%04X", request.code, request.object,
                request.extension, request.cabinet);
  return text.data();
}

std::optional<Request> ReadPlace(std::string_view text) {
  std::array<std::uint32_t, 4> parts{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (std::uint32_t& part : parts) {
    if (&part != parts.data() && (at == end || *at++ != '-')) {
      return std::nullopt;
    }
    const auto [next, error] = std::from_chars(at, end, part, 16);
    if (error != std::errc()) {
      return std::nullopt;
    }
    at = next;
  }
  return at == end ? std::optional(Request{parts[0], parts[2], parts[1], parts[3], std::nullopt})
                   : std::nullopt;
}

}  // namespace emstatus::host
