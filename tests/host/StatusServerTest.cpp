#include "host/socket/StatusServer.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <functional>

#include "host/socket/SocketPath.h"
#include "host/socket/StatusClient.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;
using std::chrono::milliseconds;

constexpr milliseconds kLong{20000};
const ordered_json kAskReport = {{"get", "report"}};

FileDescriptor Connected(const std::string& path) {
  FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = SocketAddress(path);
  EXPECT_EQ(connect(socket.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  return socket;
}

bool Write(const FileDescriptor& socket, const std::string& text) {
  return send(socket.Number(), text.data(), text.size(), MSG_NOSIGNAL) == ssize_t(text.size());
}

/// Everything up to the end of the connection.
std::string ReadAll(const FileDescriptor& socket) {
  std::string text;
  char bytes[4096];
  for (ssize_t count = 0; (count = recv(socket.Number(), bytes, sizeof(bytes), 0)) > 0;) {
    text.append(bytes, std::size_t(count));
  }
  return text;
}

double ProcessorSeconds() {
  timespec time{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

long ResidentKilobytes() {
  std::ifstream file("/proc/self/status");
  for (std::string word; file >> word;) {
    if (word == "VmRSS:") {
      long value = 0;
      file >> value;
      return value;
    }
  }
  return 0;
}

class StatusServerTest : public testing::Test {
 protected:
  StatusServer::Settings Settings() const {
    StatusServer::Settings settings{path_, 0600, "9.9.9", {}};
    settings.limits.idle = milliseconds(200);
    settings.limits.stalled = milliseconds(200);
    settings.limits.acceptPause = milliseconds(100);
    return settings;
  }
  StatusClient Client() const { return std::move(StatusClient::Connect(path_, kLong).value()); }

  test::TemporaryDirectory folder_;
  const std::string path_ = folder_.File("emhost.sock");
};

TEST_F(StatusServerTest, WhoAsksBeforeTheFirstReportWaitsForIt) {
  StatusServer server(Settings());
  StatusClient early = Client();
  std::thread publisher([&] { server.Publish({{"report", {{"n", 1}}}}); });
  EXPECT_EQ(early.Ask(kAskReport)["report"]["n"], 1);
  publisher.join();
  server.Publish({{"report", {{"n", 2}}}});
  const ordered_json reply = early.Ask(kAskReport);
  EXPECT_EQ(reply.dump(), R"({"emhost":"9.9.9","protocol":1,"report":{"n":2}})");

  // As from a shell, without a line feed: the end of the input ends the request.
  const FileDescriptor shell = Connected(path_);
  EXPECT_TRUE(Write(shell, kAskReport.dump() + "\n" + kAskReport.dump()));
  shutdown(shell.Number(), SHUT_WR);
  EXPECT_EQ(ReadAll(shell), reply.dump() + "\n" + reply.dump() + "\n");
}

TEST_F(StatusServerTest, EventsAreKeptAndFollowed) {
  auto settings = Settings();
  settings.limits.keptEvents = 3;
  std::optional<StatusServer> server(std::in_place, settings);
  for (int number = 1; number <= 5; ++number) {
    server->Tell({{"n", number}});
  }
  const auto lines = [](StatusClient& client, const ordered_json& request) {
    std::string text;
    for (std::size_t rest = client.Ask(request)["kept"]; rest > 0; --rest) {
      text += client.ReadLine().value_or("?");
    }
    return text;
  };
  StatusClient client = Client();
  EXPECT_EQ(lines(client, {{"get", "events"}, {"last", 99}}), R"({"n":3}{"n":4}{"n":5})");
  EXPECT_EQ(lines(client, {{"get", "events"}, {"last", 1}, {"follow", true}}), R"({"n":5})");
  std::this_thread::sleep_for(milliseconds(300));
  server->Tell({{"n", 6}});
  EXPECT_EQ(client.ReadLine(), R"({"n":6})") << "a follower may be silent for longer than the others";
  server.reset();
  EXPECT_EQ(client.ReadLine(), R"({"end":"emhost has ended"})");
  EXPECT_EQ(client.ReadLine(), std::nullopt);
  EXPECT_FALSE(std::filesystem::exists(path_) || std::filesystem::exists(path_ + ".lock"));
}

/// Each of them against a server at work; afterwards an honest client is answered, and the server has neither
/// grown nor run in circles.
TEST_F(StatusServerTest, HostileClientsHarmNobody) {
  StatusServer server(Settings());
  const std::string big(200000, 'x');
  server.Publish({{"report", big}});
  std::vector<FileDescriptor> held;
  const struct {
    const char* name;
    std::function<void()> act;
  } rows[] = {
      {"rubbish",
       [&] {
         for (const std::string& text : std::initializer_list<std::string>{
                  "\n", "{}\n", "[]\n", std::string("\0\xFF\n", 3), "{\"get\":7}\n",
                  "{\"get\":\"events\",\"last\":-1,\"follow\":[]}x\n", "{\"get\":\"report\"",
                  "GET / HTTP/1.1\r\n\r\n"}) {
           const FileDescriptor client = Connected(path_);
           EXPECT_TRUE(Write(client, text));
           shutdown(client.Number(), SHUT_WR);
           EXPECT_NE(ReadAll(client).find(R"("error":"expected {)"), std::string::npos) << text;
         }
       }},
      {"deep nesting",
       [&] {
         const FileDescriptor client = Connected(path_);
         EXPECT_TRUE(Write(client, std::string(4000, '[') + "\n"));
         EXPECT_NE(ReadAll(client).find("error"), std::string::npos);
       }},
      {"no line feed",
       [&] {
         const FileDescriptor client = Connected(path_);
         static_cast<void>(Write(client, std::string(1 << 20, 'x')));
         EXPECT_NE(ReadAll(client).find("at most 4096 bytes"), std::string::npos);
       }},
      {"half a line, then silence",
       [&] {
         const FileDescriptor client = Connected(path_);
         EXPECT_TRUE(Write(client, "{\"get\":"));
         EXPECT_EQ(ReadAll(client), "") << "dropped after a while";
       }},
      {"silence", [&] { EXPECT_EQ(ReadAll(Connected(path_)), ""); }},
      {"asks and never reads",
       [&] {
         const FileDescriptor client = Connected(path_);
         while (Write(client, kAskReport.dump() + "\n")) {
         }
       }},
      {"gone at once",
       [&] {
         for (int count = 0; count < 100; ++count) {
           Connected(path_);
           EXPECT_TRUE(Write(Connected(path_), kAskReport.dump() + "\n"));
         }
       }},
      {"follows and never reads",
       [&] {
         const FileDescriptor client = Connected(path_);
         EXPECT_TRUE(Write(client, "{\"get\":\"events\",\"follow\":true}\n"));
         for (int count = 0; count < 5000; ++count) {
           server.Tell({{"text", std::string(1000, 'x')}});
         }
         pollfd gone{client.Number(), POLLHUP, 0};
         while (poll(&gone, 1, int(kLong.count())) > 0 && (gone.revents & POLLHUP) == 0) {
           std::this_thread::sleep_for(milliseconds(5));
         }
         EXPECT_NE(gone.revents & POLLHUP, 0);
       }},
      {"two hundred",
       [&] {
         for (int count = 0; count < 200; ++count) {
           held.push_back(Connected(path_));
         }
         std::size_t refused = 0;
         for (const FileDescriptor& client : held) {
           refused +=
               ReadAll(client).find("busy: there are 16 connections of this user") != std::string::npos;
         }
         EXPECT_GE(refused, 200U - 6 * 16U) << "more than one lot of 16 at a time";
         held.clear();
       }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    row.act();
    StatusClient honest = Client();
    EXPECT_EQ(honest.Ask(kAskReport)["report"], big);
  }
  EXPECT_LT(ResidentKilobytes(), 200000);
  const double before = ProcessorSeconds();
  std::this_thread::sleep_for(milliseconds(300));
  EXPECT_LT(ProcessorSeconds() - before, 0.1) << "the server runs in circles";
}

TEST_F(StatusServerTest, WithoutADescriptorToSpareItWaits) {
  StatusServer server(Settings());
  server.Publish({{"report", 1}});
  FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  // The lowest free number is the next one to be given.
  const FileDescriptor next(dup(client.Number()));
  const rlimit none{rlim_t(next.Number()) + 1, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  const sockaddr_un address = SocketAddress(path_);
  EXPECT_EQ(connect(client.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  const double cpu = ProcessorSeconds();
  std::this_thread::sleep_for(milliseconds(350));
  EXPECT_LT(ProcessorSeconds() - cpu, 0.1) << "the server runs in circles";
  pollfd answered{client.Number(), POLLIN, 0};
  EXPECT_TRUE(Write(client, kAskReport.dump() + "\n"));
  EXPECT_EQ(poll(&answered, 1, 50), 0) << "the test did not take the last descriptor";
  setrlimit(RLIMIT_NOFILE, &before);
  shutdown(client.Number(), SHUT_WR);
  EXPECT_EQ(ReadAll(client), "{\"emhost\":\"9.9.9\",\"protocol\":1,\"report\":1}\n");
}

TEST_F(StatusServerTest, OneServesAPathAndADeadFileIsReplaced) {
  const auto refusal = [&](const std::string& path) -> std::string {
    try {
      auto settings = Settings();
      settings.path = path;
      const StatusServer server(settings);
      return "";
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  };
  {
    const StatusServer first(Settings());
    EXPECT_NE(refusal(path_).find("another emhost (process " + std::to_string(getpid()) + ") serves"),
              std::string::npos);
    std::filesystem::remove(path_ + ".lock");
    EXPECT_NE(refusal(path_).find("somebody listens"), std::string::npos) << "a lock that was cleaned away";
    EXPECT_TRUE(StatusClient::Connect(path_, kLong)) << "the first one was harmed";
    struct stat status {};
    ASSERT_EQ(stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
  }
  // One that was killed leaves its files.
  const pid_t child = fork();
  if (child == 0) {
    const ListeningSocket socket(path_, 0666);
    _exit(0);
  }
  waitpid(child, nullptr, 0);
  ASSERT_TRUE(std::filesystem::exists(path_));
  EXPECT_FALSE(StatusClient::Connect(path_, kLong)) << "nobody is there";
  EXPECT_EQ(refusal(path_), "");

  const std::string text = folder_.Write("text", "keep me");
  EXPECT_NE(refusal(text).find("is there and is no socket"), std::string::npos);
  EXPECT_EQ(folder_.Read("text"), "keep me");
  EXPECT_NE(refusal(folder_.File("no/such/folder")).find("cannot make "), std::string::npos);
  EXPECT_NE(refusal(folder_.File(std::string(200, 'x'))).find("1 to 107 bytes"), std::string::npos);
}

/// What may answer in place of an emhost of this version.
TEST_F(StatusServerTest, TheClientSaysWhatIsWrongWithTheAnswer) {
  const struct {
    std::string answer;
    const char* message;
  } rows[] = {
      {"", "did not answer within 1 second."},
      {"{\"emhost\":", "did not answer within 1 second."},
      {"{\"emhost\":\"3.0\",\"protocol\":2}\n", "(version \"3.0\") speaks protocol 2, this one protocol 1"},
      {"{\"emhost\":\"3.0\",\"protocol\":1,\"error\":\"no\"}\n", "refuses: no."},
      {"220 mail.example.org\n", "is no emhost"},
      {"[]\n", "is no emhost"},
  };
  const ListeningSocket listener(path_, 0600);
  for (const auto& row : rows) {
    auto client = StatusClient::Connect(path_, milliseconds(500));
    const FileDescriptor socket(accept(listener.Descriptor(), nullptr, nullptr));
    EXPECT_TRUE(Write(socket, row.answer));
    try {
      client->Ask(kAskReport);
      ADD_FAILURE() << row.answer;
    } catch (const SocketError& error) {
      EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what();
    }
  }
  // Nobody accepts.
  std::vector<StatusClient> queue;
  EXPECT_THROW(
      for (int count = 0; count < 200;
           ++count) { queue.push_back(StatusClient::Connect(path_, milliseconds(50)).value()); },
      SocketError);
}

TEST(SocketPath, WhereItIsServedAndLookedFor) {
  const struct {
    SocketSurroundings surroundings;
    std::string served;
    std::vector<std::string> candidates;
  } rows[] = {
      {{"/run/x", "/run/user/7", true}, "/run/x/emhost.sock", {"/run/x/emhost.sock"}},
      {{"", "/run/user/7", false},
       "/run/user/7/emhost.sock",
       {"/run/user/7/emhost.sock", "/run/emhost/emhost.sock", "/run/emhost.sock"}},
      {{"", "/run/user/0", true}, "/run/emhost.sock", {"/run/emhost/emhost.sock", "/run/emhost.sock"}},
      {{"", "", false}, "", {"/run/emhost/emhost.sock", "/run/emhost.sock"}},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ServedSocket(row.surroundings), row.served);
    EXPECT_EQ(SocketCandidates(row.surroundings), row.candidates);
  }
}

}  // namespace
}  // namespace emstatus::host
