#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include "host/commands/HostOptions.h"
#include "host/socket/StatusClient.h"
#include "host/view/Report.h"
#include "host/view/StatusWords.h"

namespace emstatus::host {

/// Which running emhost is asked.
struct ClientOptions {
  /// Empty: the usual places.
  std::string socket;
  int timeoutSeconds = 10;

  std::chrono::milliseconds Timeout() const { return std::chrono::seconds(timeoutSeconds); }
};

/// Adds --socket and --timeout. `options` must live until the command line is parsed.
void AddClientOptions(CLI::App& command, ClientOptions& options);

/// Where a command has its report from: the running emhost, or a scan of its own, and how that is made.
struct ReportOptions {
  HostOptions host;
  ClientOptions client;
  /// Also set by every option that says how to scan.
  bool ownScan = false;
};

/// Adds all of them. `options` must live until the command line is parsed.
void AddReportOptions(CLI::App& command, ReportOptions& options);

/// The running emhost; nothing when there is none. Throws a SocketError when there is one, but it cannot be
/// asked, and when there is none at the socket that was named.
std::optional<StatusClient> ConnectToRunning(const ClientOptions& options);

/// The report as TreeJson writes it, of the running emhost, or without one of a scan of its own. Throws a
/// std::runtime_error that is for people. [main thread, no other thread runs]
nlohmann::ordered_json FetchReportJson(const ReportOptions& options);

/// A report with the words for the statuses in it.
struct FetchedReport {
  Report report;
  StatusWords words;
};

/// The same to work on. Throws also when the report is one that this version cannot read.
FetchedReport FetchReportAndWords(const ReportOptions& options);

/// Without the words.
inline Report FetchReport(const ReportOptions& options) {
  return FetchReportAndWords(options).report;
}

}  // namespace emstatus::host
