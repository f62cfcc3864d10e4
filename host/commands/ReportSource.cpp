#include "host/commands/ReportSource.h"

#include <stdexcept>
#include <utility>

#include "host/commands/ProgramVersion.h"
#include "host/commands/RunningHost.h"
#include "host/socket/SocketPath.h"
#include "host/view/ReportAge.h"
#include "host/view/ReportReader.h"
#include "host/view/TreeJson.h"

namespace emstatus::host {
namespace {

/// For a scan of one's own, as run --once has it.
constexpr std::chrono::seconds kOwnScanLimit{60};

FetchedReport ScanForReport(const HostOptions& options) {
  RunningHost host(options);
  auto report = host.FirstReport(kOwnScanLimit);
  if (!report) {
    throw std::runtime_error("stopped before the scan had ended.");
  }
  return {std::move(*report), host.Words()};
}

/// Nothing without a running emhost.
std::optional<nlohmann::ordered_json> AskForReport(const ReportOptions& options) {
  auto running = options.ownScan ? std::nullopt : ConnectToRunning(options.client);
  if (!running) {
    return std::nullopt;
  }
  nlohmann::ordered_json reply = running->Ask({{"get", "report"}});
  if (!reply.contains("report")) {
    throw SocketError("the emhost at " + running->Path() + " (version " + reply["emhost"].dump() +
                      ") gave no report.");
  }
  LetAge(reply["report"], std::chrono::system_clock::now());
  return std::move(reply["report"]);
}

}  // namespace

void AddClientOptions(CLI::App& command, ClientOptions& options) {
  command
      .add_option("--socket", options.socket,
                  "The socket of the running emhost (default: where emhost run puts it)")
      ->type_name("PATH");
  command.add_option("--timeout", options.timeoutSeconds, "Seconds to wait for the running emhost")
      ->check(CLI::Range(1, 3600).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
}

void AddReportOptions(CLI::App& command, ReportOptions& options) {
  AddHostOptions(command, options.host);
  // Whoever says how to scan wants such a scan, and not what another emhost has found in its own way.
  for (CLI::Option* option : command.get_options()) {
    if (option->nonpositional() && option->get_name() != "--help") {
      option->each([&options](const std::string&) { options.ownScan = true; });
    }
  }
  AddClientOptions(command, options.client);
  command.add_flag("--own-scan", options.ownScan,
                   "Scan, though there is a running emhost. Every option that says how to scan does so too");
}

std::optional<StatusClient> ConnectToRunning(const ClientOptions& options) {
  if (!options.socket.empty()) {
    auto client = StatusClient::Connect(options.socket, options.Timeout());
    if (!client) {
      throw SocketError("no emhost answers at " + options.socket + ". Start one with emhost run --socket " +
                        options.socket + ", or leave out --socket.");
    }
    return client;
  }
  std::optional<SocketError> error;
  for (const std::string& path : SocketCandidates(SocketSurroundings::OfThisProcess())) {
    try {
      if (auto client = StatusClient::Connect(path, options.Timeout())) {
        return client;
      }
    } catch (const SocketError& refused) {
      error = refused;
    }
  }
  if (error) {
    throw SocketError(*error);
  }
  return std::nullopt;
}

nlohmann::ordered_json FetchReportJson(const ReportOptions& options) {
  if (auto json = AskForReport(options)) {
    return std::move(*json);
  }
  const FetchedReport own = ScanForReport(options.host);
  return TreeJson(own.report, own.words);
}

FetchedReport FetchReportAndWords(const ReportOptions& options) {
  const auto json = AskForReport(options);
  if (!json) {
    return ScanForReport(options.host);
  }
  try {
    return {ReadReport(*json), ReadStatusWords(*json)};
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string("the running emhost gives a report that this version (") +
                             ProgramVersion() + ") cannot read: " + error.what() +
                             ". Use commands of its own version, or --own-scan.");
  }
}

}  // namespace emstatus::host
