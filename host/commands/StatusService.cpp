#include "host/commands/StatusService.h"

#include <filesystem>
#include <iostream>
#include <stdexcept>

#include "host/commands/ProgramVersion.h"
#include "host/socket/SocketPath.h"
#include "host/view/TreeJson.h"

namespace emstatus::host {
namespace {

constexpr mode_t kForOneUser = 0600;
constexpr mode_t kForAll = 0666;
constexpr int kJsonIndent = 2;

std::unique_ptr<StatusServer> MakeServer(const std::string& path, bool isRoot) {
  // The host changes its folder later.
  return std::make_unique<StatusServer>(StatusServer::Settings{
      std::filesystem::absolute(path).string(), isRoot ? kForAll : kForOneUser, ProgramVersion(), {}});
}

}  // namespace

void AddServiceOptions(CLI::App& command, ServiceOptions& options) {
  auto* socket = command
                     .add_option("--socket", options.socket,
                                 "Where other commands ask this emhost (default: emhost.sock in "
                                 "$RUNTIME_DIRECTORY, in /run for root, else in $XDG_RUNTIME_DIR)")
                     ->type_name("PATH");
  command.add_flag("--no-socket", options.none, "Answer no other commands")->excludes(socket);
}

StatusService::StatusService(const ServiceOptions& options) {
  if (options.none) {
    return;
  }
  const SocketSurroundings surroundings = SocketSurroundings::OfThisProcess();
  if (!options.socket.empty()) {
    server_ = MakeServer(options.socket, surroundings.isRoot);
    return;
  }
  const std::string path = ServedSocket(surroundings);
  if (path.empty()) {
    std::cerr
        << "emhost: without XDG_RUNTIME_DIR there is no place for a socket, so that other commands cannot "
           "ask this emhost. Name one with --socket."
        << std::endl;
    return;
  }
  try {
    server_ = MakeServer(path, surroundings.isRoot);
  } catch (const SocketTaken& taken) {
    std::cerr << "emhost: " << taken.what() << "; this one goes on without." << std::endl;
  } catch (const std::runtime_error& error) {
    std::cerr << "emhost: " << error.what() << " This one goes on without." << std::endl;
  }
}

void StatusService::Publish(const Report& report, const StatusWords& words) {
  if (server_) {
    server_->Publish({{"report", TreeJson(report, words)}});
  }
}

void StatusService::Tell(const nlohmann::ordered_json& event, const std::string& text) {
  if (server_) {
    server_->Tell({{"event", event}, {"text", text}});
  }
}

std::string JsonText(const nlohmann::ordered_json& json, bool laidOut) {
  return json.dump(laidOut ? kJsonIndent : -1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace emstatus::host
