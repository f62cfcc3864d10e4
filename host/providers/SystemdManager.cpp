#include <systemd/sd-bus.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <system_error>

#include "host/providers/UnitManager.h"

namespace emstatus::host {
namespace {

constexpr char kSocket[] = "/run/dbus/system_bus_socket";
constexpr char kService[] = "org.freedesktop.systemd1";
constexpr char kPath[] = "/org/freedesktop/systemd1";
constexpr char kInterface[] = "org.freedesktop.systemd1.Manager";
constexpr std::uint64_t kTimeoutMicroseconds = 5'000'000;

struct BusDeleter {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
struct MessageDeleter {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;

int Check(int result, const char* what) {
  if (result < 0) {
    throw std::system_error(-result, std::generic_category(), std::string("systemd: ") + what);
  }
  return result;
}

class SystemdManager final : public UnitManager {
 public:
  bool IsThere() override { return sd_booted() > 0 && access(kSocket, F_OK) == 0; }
  std::string SystemState() override;
  std::vector<UnitState> FailedUnits() override { return List("ListUnitsFiltered", {{"failed"}}); }
  std::vector<UnitState> Units(const std::vector<std::string>& names) override {
    return List("ListUnitsByNames", {names});
  }
  std::vector<UnitState> UnitsLike(const std::string& pattern) override {
    return List("ListUnitsByPatterns", {{}, {pattern}});
  }

 private:
  sd_bus* Bus();
  Message Call(sd_bus_message* question);
  /// Calls a method that takes lists of texts and answers with units.
  std::vector<UnitState> List(const char* method, const std::vector<std::vector<std::string>>& lists);

  std::unique_ptr<sd_bus, BusDeleter> bus_;
};

sd_bus* SystemdManager::Bus() {
  if (!bus_) {
    sd_bus* bus = nullptr;
    Check(sd_bus_open_system(&bus), "no connection to the system bus");
    bus_.reset(bus);
    Check(sd_bus_set_method_call_timeout(bus, kTimeoutMicroseconds), "time-out");
  }
  return bus_.get();
}

Message SystemdManager::Call(sd_bus_message* question) {
  sd_bus_message* answer = nullptr;
  const int result = sd_bus_call(Bus(), question, kTimeoutMicroseconds, nullptr, &answer);
  if (result < 0) {
    // Whatever was wrong with the connection is not carried into the next read.
    bus_.reset();
  }
  Check(result, "no answer");
  return Message(answer);
}

std::string SystemdManager::SystemState() {
  sd_bus_message* made = nullptr;
  Check(
      sd_bus_message_new_method_call(Bus(), &made, kService, kPath, "org.freedesktop.DBus.Properties", "Get"),
      "Get");
  const Message question(made);
  Check(sd_bus_message_append(made, "ss", kInterface, "SystemState"), "Get");
  const Message answer = Call(made);
  const char* state = nullptr;
  Check(sd_bus_message_read(answer.get(), "v", "s", &state), "SystemState");
  return state;
}

std::vector<UnitState> SystemdManager::List(const char* method,
                                            const std::vector<std::vector<std::string>>& lists) {
  sd_bus_message* made = nullptr;
  Check(sd_bus_message_new_method_call(Bus(), &made, kService, kPath, kInterface, method), method);
  const Message question(made);
  for (const std::vector<std::string>& list : lists) {
    Check(sd_bus_message_open_container(made, 'a', "s"), method);
    for (const std::string& text : list) {
      Check(sd_bus_message_append(made, "s", text.c_str()), method);
    }
    Check(sd_bus_message_close_container(made), method);
  }
  const Message answer = Call(made);
  Check(sd_bus_message_enter_container(answer.get(), 'a', "(ssssssouso)"), method);
  std::vector<UnitState> units;
  const char* fields[9] = {};
  std::uint32_t job = 0;
  while (
      Check(sd_bus_message_read(answer.get(), "(ssssssouso)", &fields[0], &fields[1], &fields[2], &fields[3],
                                &fields[4], &fields[5], &fields[6], &job, &fields[7], &fields[8]),
            method) > 0) {
    units.push_back({fields[0], fields[1], fields[2], fields[3], fields[4]});
  }
  return units;
}

}  // namespace

std::unique_ptr<UnitManager> MakeSystemdManager() {
  return std::make_unique<SystemdManager>();
}

}  // namespace emstatus::host
