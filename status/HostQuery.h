#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/RequestString.h"

namespace emstatus {

class HostLink;

/// What takes the place of a request's own "OI" and "CA".
struct QueryTarget {
  /// Stands for "as the request says" in either field.
  static constexpr std::uint32_t kAsRequested = 0xFFFFFFFF;

  std::uint32_t objectIndex = kAsRequested;
  std::uint32_t cabinet = kAsRequested;
};

/// An attribute of a request that is read as a hexadecimal number; nothing when it is missing.
std::optional<std::uint32_t> HexAttribute(const Element& request, std::string_view name);

/// Asks the host what a component's request records say. Every failure is traced and gives false or nothing;
/// a call shares nothing with another. [any thread]
class HostQuery {
 public:
  struct Result {
    /// The reply's data was a number, `value`; otherwise it was `text`.
    bool isNumber = false;
    std::int32_t value = 0;
    std::string text;
  };

  struct Status {
    std::int32_t value = 0;
    /// A next object follows; the command interface never says so.
    bool repeat = false;
  };

  explicit HostQuery(HostLink& host) : host_(host) {}

  /// Sends one request and reads its reply; nothing when it did not succeed.
  std::optional<Result> ExecuteQuery(const RequestRecord& request, const QueryTarget& target) const;

  /// The reply's text; nothing for a failure or a number.
  std::optional<std::string> QueryString(const RequestRecord& request, const QueryTarget& target) const;

  /// The reply's number; nothing for a failure or a text.
  std::optional<std::int32_t> QueryInteger(const RequestRecord& request, const QueryTarget& target) const;

  /// The raw status of a component or instance; nothing for a failure or a text.
  std::optional<Status> QueryStatus(const RequestRecord& request, const QueryTarget& target) const;

  /// Sends a command for object 0; true when it succeeded.
  bool QueryCommand(const RequestRecord& request) const;

 private:
  HostLink& host_;
};

}  // namespace emstatus
