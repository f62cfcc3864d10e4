#include "host/socket/StatusServer.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

/// Connections taken in one turn, so that a flood of them does not keep the others waiting.
constexpr int kAcceptedAtOnce = 16;

SharedLine LineOf(const ordered_json& json) {
  return std::make_shared<const std::string>(
      json.dump(-1, ' ', false, ordered_json::error_handler_t::replace) + "\n");
}

uid_t UserOf(const FileDescriptor& socket) {
  ucred peer{};
  socklen_t size = sizeof(peer);
  const bool known = getsockopt(socket.Number(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
  return known ? peer.uid : uid_t(-1);
}

FileDescriptor NewServerWakeUp() {
  FileDescriptor descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  if (!descriptor) {
    throw std::system_error(errno, std::generic_category(), "eventfd");
  }
  return descriptor;
}

}  // namespace

StatusServer::StatusServer(Settings settings)
    : settings_(std::move(settings)), listener_(settings_.path, settings_.mode), wakeUp_(NewServerWakeUp()) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  thread_ = std::thread([this] { Run(); });
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_setname_np(thread_.native_handle(), "socket");
}

StatusServer::~StatusServer() {
  {
    const std::lock_guard guard(lock_);
    stopping_ = true;
  }
  Wake();
  thread_.join();
}

void StatusServer::Wake() const {
  static_cast<void>(eventfd_write(wakeUp_.Number(), 1));
}

void StatusServer::Publish(const ordered_json& members) {
  SharedLine line = Reply(members);
  {
    const std::lock_guard guard(lock_);
    std::swap(published_, line);
  }
  Wake();
}

void StatusServer::Tell(const ordered_json& event) {
  SharedLine line = LineOf(event);
  {
    const std::lock_guard guard(lock_);
    told_.push_back(std::move(line));
  }
  Wake();
}

SharedLine StatusServer::Reply(const ordered_json& members) const {
  ordered_json json = {{"emhost", settings_.version}, {"protocol", kProtocolVersion}};
  json.update(members);
  return LineOf(json);
}

SharedLine StatusServer::Refusal(std::string_view text) const {
  return Reply({{"error", text}});
}

void StatusServer::Run() {
  while (!ending_) {
    try {
      Turn();
    } catch (const std::exception&) {
      // Out of memory: better without clients than without the host.
      clients_.clear();
    }
  }
  SayFarewell();
}

/// Milliseconds until the next thing to do by the clock; negative: none.
int StatusServer::Timeout() const {
  std::optional<Clock::time_point> next = acceptAgain_;
  for (const ServedClient& client : clients_) {
    const auto deadline = client.Deadline(settings_.limits.idle, settings_.limits.stalled);
    if (deadline && (!next || *deadline < *next)) {
      next = deadline;
    }
  }
  if (!next) {
    return -1;
  }
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(*next - Clock::now());
  return int(std::max<std::int64_t>(rest.count(), 0));
}

void StatusServer::Turn() {
  std::vector<pollfd> polled{{wakeUp_.Number(), POLLIN, 0},
                             {acceptAgain_ ? -1 : listener_.Descriptor(), POLLIN, 0}};
  for (const ServedClient& client : clients_) {
    polled.push_back({client.Descriptor(), client.Interest(), 0});
  }
  if (poll(polled.data(), polled.size(), Timeout()) < 0) {
    // Out of memory. That must not become a circle either.
    std::this_thread::sleep_for(settings_.limits.acceptPause);
    return;
  }
  if (polled[0].revents != 0) {
    TakeNews();
  }
  const auto now = Clock::now();
  auto event = polled.begin() + 2;
  for (auto client = clients_.begin(); client != clients_.end(); ++event) {
    // A peer that has closed both directions reads no answer.
    bool stays = (event->revents & (POLLHUP | POLLERR | POLLNVAL)) == 0;
    stays = stays && ((event->revents & POLLIN) == 0 || client->Receive()) && Advance(*client);
    const auto deadline = client->Deadline(settings_.limits.idle, settings_.limits.stalled);
    stays = stays && (!deadline || now < *deadline);
    client = stays ? std::next(client) : clients_.erase(client);
  }
  if (acceptAgain_ && now >= *acceptAgain_) {
    acceptAgain_.reset();
  }
  if (polled[1].revents != 0) {
    Accept();
  }
}

void StatusServer::TakeNews() {
  eventfd_t count = 0;
  static_cast<void>(eventfd_read(wakeUp_.Number(), &count));
  std::vector<SharedLine> told;
  {
    const std::lock_guard guard(lock_);
    report_ = published_;
    told = std::exchange(told_, {});
    ending_ = stopping_;
  }
  for (SharedLine& line : told) {
    events_.push_back(line);
    if (events_.size() > settings_.limits.keptEvents) {
      events_.pop_front();
    }
  }
  for (ServedClient& client : clients_) {
    if (client.state == ServedClient::State::Follows) {
      std::ranges::for_each(told, [&](const SharedLine& line) { client.Add(line); });
      if (client.Waiting() > settings_.limits.keptEvents + settings_.limits.waitingLines) {
        client.Abandon();
      }
    } else if (client.state == ServedClient::State::AwaitsReport && report_) {
      client.Add(report_);
      client.state = ServedClient::State::Asking;
    }
  }
}

std::string StatusServer::ReasonToRefuse(uid_t user) const {
  const auto ofUser = std::ranges::count(clients_, user, &ServedClient::User);
  if (std::size_t(ofUser) >= settings_.limits.clientsOfOneUser) {
    return "busy: there are " + std::to_string(ofUser) + " connections of this user already";
  }
  return clients_.size() < settings_.limits.clients
             ? std::string()
             : "busy: there are " + std::to_string(clients_.size()) + " connections already";
}

void StatusServer::Accept() {
  for (int count = 0; count < kAcceptedAtOnce; ++count) {
    FileDescriptor socket(accept4(listener_.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket) {
      // Whoever is not accepted stays in the queue, which goes on being readable: that must not make this
      // thread run in circles while the system has no descriptor or memory to spare.
      if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR && errno != ECONNABORTED) {
        acceptAgain_ = Clock::now() + settings_.limits.acceptPause;
      }
      return;
    }
    const uid_t user = UserOf(socket);
    const std::string reason = ReasonToRefuse(user);
    ServedClient client(std::move(socket), user);
    if (reason.empty()) {
      clients_.push_back(std::move(client));
    } else {
      client.Add(Refusal(reason));
      static_cast<void>(client.Flush());
    }
  }
}

/// Answers what has been asked as long as the client takes the answers. False: it is to go.
bool StatusServer::Advance(ServedClient& client) {
  for (;;) {
    if (!client.Flush()) {
      return false;
    }
    if (client.Waiting() != 0 || client.state == ServedClient::State::AwaitsReport ||
        client.state == ServedClient::State::Follows) {
      return true;
    }
    if (client.state == ServedClient::State::Leaving) {
      return false;
    }
    if (const auto line = client.TakeLine()) {
      Answer(client, *line);
    } else if (client.LineIsTooLong()) {
      client.Add(Refusal("a request has at most " + std::to_string(kLongestRequest) + " bytes"));
      client.state = ServedClient::State::Leaving;
    } else {
      return !client.InputHasEnded();
    }
  }
}

void StatusServer::Answer(ServedClient& client, const std::string& request) {
  const nlohmann::json json = nlohmann::json::parse(request, nullptr, false);
  const auto get = json.is_object() ? json.find("get") : json.end();
  if (get != json.end() && *get == "report") {
    if (report_) {
      client.Add(report_);
    } else {
      client.state = ServedClient::State::AwaitsReport;
    }
  } else if (get != json.end() && *get == "events") {
    AnswerEvents(client, json);
  } else {
    client.Add(Refusal(R"(expected {"get":"report"} or {"get":"events"} in one line)"));
    client.state = ServedClient::State::Leaving;
  }
}

void StatusServer::AnswerEvents(ServedClient& client, const nlohmann::json& request) {
  std::size_t count = events_.size();
  if (const auto last = request.find("last"); last != request.end() && last->is_number_unsigned()) {
    count = std::min<std::size_t>(count, last->get<std::size_t>());
  }
  client.Add(Reply({{"kept", count}}));
  std::for_each(events_.end() - std::ptrdiff_t(count), events_.end(),
                [&](const SharedLine& line) { client.Add(line); });
  if (request.value("follow", nlohmann::json()) == true) {
    client.state = ServedClient::State::Follows;
  }
}

void StatusServer::SayFarewell() {
  const SharedLine farewell = LineOf({{"end", "emhost has ended"}});
  for (ServedClient& client : clients_) {
    if (client.state == ServedClient::State::Follows) {
      client.Add(farewell);
    } else if (client.state == ServedClient::State::AwaitsReport) {
      client.Add(Refusal("emhost has ended before its first scan did"));
    }
    static_cast<void>(client.Flush());
  }
  clients_.clear();
}

}  // namespace emstatus::host
