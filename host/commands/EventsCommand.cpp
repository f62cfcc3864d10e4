#include "host/commands/EventsCommand.h"

#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "host/commands/ReportSource.h"
#include "host/commands/StatusService.h"
#include "host/commands/StopSignals.h"

namespace emstatus::host {
namespace {

struct EventsOptions {
  ClientOptions client;
  std::optional<unsigned> last;
  bool follow = false;
  bool json = false;
};

/// Shows a line of the running emhost. False for the last one: it has ended.
bool ShowEvent(const std::string& line, const EventsOptions& options) {
  const auto json = nlohmann::ordered_json::parse(line, nullptr, false);
  if (json.is_object() && json.contains("end")) {
    std::cerr << "emhost: the running emhost has ended." << std::endl;
    return false;
  }
  if (!json.is_object() || !json.contains("event") ||
      !json.value("text", nlohmann::ordered_json()).is_string()) {
    throw SocketError("the running emhost sends no event but: " + line.substr(0, 200));
  }
  std::cout << (options.json ? JsonText(json["event"]) : json["text"].get<std::string>()) << std::endl;
  return true;
}

int ShowEvents(const EventsOptions& options) {
  const StopSignals signals;
  auto running = ConnectToRunning(options.client);
  if (!running) {
    throw SocketError(
        "there is no running emhost, and only that knows what has happened. Start one with emhost run.");
  }
  nlohmann::ordered_json request = {{"get", "events"}, {"follow", options.follow}};
  if (options.last) {
    request["last"] = *options.last;
  }
  const auto reply = running->Ask(request);
  const auto kept = reply.value("kept", std::size_t(0));
  for (std::size_t shown = 0; shown < kept || options.follow; ++shown) {
    const auto line = running->ReadLine(options.follow && shown >= kept, signals.Descriptor());
    if (!line && signals.HasCome()) {
      return 0;
    }
    if (!line) {
      throw SocketError("the connection to the emhost at " + running->Path() + " broke off.");
    }
    if (!ShowEvent(*line, options)) {
      return 0;
    }
  }
  return 0;
}

}  // namespace

std::function<int()> SetUpEventsCommand(CLI::App& command) {
  const auto options = std::make_shared<EventsOptions>();
  AddClientOptions(command, options->client);
  command.add_option("--last", options->last, "Only so many of those that are kept")->type_name("COUNT");
  command.add_flag("--follow,-f", options->follow, "Go on with each event as it comes, until Ctrl-C");
  command.add_flag("--json", options->json, "For programs: a line of JSON for each event");
  command.footer(
      "Examples:\n"
      "  emhost events                      the last 1000, as far as there were so many\n"
      "  emhost events --follow --last 0    only what happens from now on\n"
      "Exit code: 0 done, 3 no running emhost, or it cannot be asked.");
  return [options] { return ShowEvents(*options); };
}

}  // namespace emstatus::host
