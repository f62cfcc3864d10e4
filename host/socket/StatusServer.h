#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/socket/ListeningSocket.h"
#include "host/socket/Protocol.h"
#include "host/socket/ServedClient.h"

namespace emstatus::host {

/// How much a server takes upon itself.
struct ServerLimits {
  std::size_t clients = 64;
  std::size_t clientsOfOneUser = 16;
  std::size_t keptEvents = 1000;
  /// Lines that may wait for a follower before it is dropped, beyond those that were kept.
  std::size_t waitingLines = 1000;
  /// How long a client may say nothing, and how long it may take nothing.
  std::chrono::milliseconds idle{10000};
  std::chrono::milliseconds stalled{30000};
  /// Between two tries to accept when the system has no descriptor to spare.
  std::chrono::milliseconds acceptPause{1000};
};

/// Answers whoever connects to the socket from finished texts, on a thread of its own: a client never makes
/// the host work or wait, whatever it does or leaves undone. docs/HOST.md describes the protocol.
class StatusServer {
 public:
  struct Settings {
    std::string path;
    /// Of the socket's file.
    mode_t mode = 0600;
    /// The program's, told with each reply.
    std::string version;
    ServerLimits limits;
  };

  /// Listens from now on; whoever asks for a report before there is one waits for it. Blocks all signals in
  /// its thread. Throws as ListeningSocket does.
  explicit StatusServer(Settings settings);
  StatusServer(const StatusServer&) = delete;
  StatusServer& operator=(const StatusServer&) = delete;
  /// Tells the followers that it ends; waits for nobody.
  ~StatusServer();

  /// What "report" is answered with from now on, as members that stand beside "emhost" and "protocol".
  /// [any thread]
  void Publish(const nlohmann::ordered_json& members);

  /// Keeps the event, and passes it to those who follow. [any thread]
  void Tell(const nlohmann::ordered_json& event);

 private:
  using Clients = std::list<ServedClient>;
  using Clock = ServedClient::Clock;

  SharedLine Reply(const nlohmann::ordered_json& members) const;
  SharedLine Refusal(std::string_view text) const;
  void Wake() const;
  void Run();
  void Turn();
  int Timeout() const;
  void TakeNews();
  void Accept();
  std::string ReasonToRefuse(uid_t user) const;
  bool Advance(ServedClient& client);
  void Answer(ServedClient& client, const std::string& request);
  void AnswerEvents(ServedClient& client, const nlohmann::json& request);
  void SayFarewell();

  // Constant after construction
  const Settings settings_;
  const ListeningSocket listener_;
  const FileDescriptor wakeUp_;
  // Guarded by lock_
  std::mutex lock_;
  SharedLine published_;
  std::vector<SharedLine> told_;
  bool stopping_ = false;
  // The thread's own
  SharedLine report_;
  std::deque<SharedLine> events_;
  Clients clients_;
  std::optional<Clock::time_point> acceptAgain_;
  bool ending_ = false;

  std::thread thread_;
};

}  // namespace emstatus::host
