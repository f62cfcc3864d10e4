#pragma once

#include <memory>
#include <string>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "host/socket/StatusServer.h"
#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// Where a running emhost is asked.
struct ServiceOptions {
  /// Empty: the usual place.
  std::string socket;
  bool none = false;
};

/// Adds --socket and --no-socket. `options` must live until the command line is parsed.
void AddServiceOptions(CLI::App& command, ServiceOptions& options);

/// What a running emhost tells other programs: the last report, and the events, over its socket. Root's is
/// open to every user: one can only read there what the machine's status is. [main thread]
class StatusService {
 public:
  /// Where the usual place cannot be had, says so on standard error and serves nobody; throws a
  /// std::runtime_error when one was asked for.
  explicit StatusService(const ServiceOptions& options);

  void Publish(const Report& report, const StatusWords& words);
  /// An event for programs and for people.
  void Tell(const nlohmann::ordered_json& event, const std::string& text);

 private:
  std::unique_ptr<StatusServer> server_;
};

/// JSON as text, laid out or on one line; bytes that are no UTF-8 are replaced.
std::string JsonText(const nlohmann::ordered_json& json, bool laidOut = false);

}  // namespace emstatus::host
