#include "host/recording/TrafficLog.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "host/configuration/UnpausedConfiguration.h"
#include "host/machine/Utf8.h"
#include "host/module/ModuleSession.h"
#include "host/recording/ConfigurationEnvironment.h"

namespace emstatus::host {
namespace {

/// What takes less is as good as at once.
constexpr std::chrono::milliseconds kNoticeable{10};

/// The file may be gone before it is read: then it was not there.
std::optional<std::string> TextOf(const SimulationFolder& folder) {
  try {
    return folder.Read();
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

void TrafficLog::OnStart(ModuleSession& session, const Machine& machine) {
  session_ = &session;
  machine_ = &machine;
  began_ = Clock::now();
  const std::string folder = std::filesystem::current_path();
  folder_.emplace(folder);
  stamp_ = folder_->Look();
  simulation_ = TextOf(*folder_);

  const auto now = std::chrono::system_clock::now().time_since_epoch();
  header_.began = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  header_.extensionCabinets = machine.ExtensionCabinets();
  header_.configuration = ReadConfigurationFile(folder + "/EM_STATUS.ini");
  header_.simulation = simulation_;
  for (const std::string& name : EnvironmentOf(header_.configuration)) {
    const char* value = std::getenv(name.c_str());
    header_.environment[name] = value == nullptr ? std::nullopt : std::optional<std::string>(value);
  }
}

std::int64_t TrafficLog::Now() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began_).count();
}

void TrafficLog::OnAnswer(const Request& request, const Answer& answer, std::chrono::milliseconds took) {
  const std::lock_guard guard(lock_);
  Known& known = known_[RequestKey(request)];
  if (known.scan != ended_) {
    known.scan = ended_;
    known.asked = 0;
  }
  const std::uint32_t occurrence = known.asked++;
  ++scan_.asked;
  if (occurrence < known.answers.size() && known.answers[occurrence] == answer) {
    return;
  }
  known.answers.resize(std::max<std::size_t>(known.answers.size(), occurrence + 1));
  known.answers[occurrence] = answer;
  scan_.answers.push_back(
      {request, occurrence, answer, Now() - took.count(), took < kNoticeable ? 0 : took.count()});
}

void TrafficLog::OnEvent(const Request& event) {
  const std::lock_guard guard(lock_);
  scan_.events.push_back({event, Now()});
}

void TrafficLog::OnWakeUp() {
  const std::lock_guard guard(lock_);
  scan_.wakeUps.push_back(Now());
}

void TrafficLog::OnScanBegin() {
  const std::lock_guard guard(lock_);
  scan_.begin = Now();
  NoteSimulation();
}

/// The module has just read the file.
void TrafficLog::NoteSimulation() {
  const auto stamp = folder_ ? folder_->Look() : std::nullopt;
  if (stamp == stamp_) {
    return;
  }
  stamp_ = stamp;
  auto text = TextOf(*folder_);
  if (text != simulation_) {
    simulation_ = text;
    scan_.simulation = RecordedSimulation{std::move(text)};
  }
}

/// Without the lock: the module is asked.
RecordedScan TrafficLog::Outcome() {
  RecordedScan outcome;
  const auto text = session_->TreeText();
  if (text && *text != treeText_) {
    tree_ = ReadStatusTree(*text);
    outcome.tree = nlohmann::ordered_json::parse(CleanUtf8(*text));
    treeText_ = *text;
  }
  outcome.objects = objects_.Note(tree_, *machine_);
  outcome.systemStatus = session_->SystemStatus().value_or(0);
  return outcome;
}

void TrafficLog::OnScanEnd(std::uint32_t led) {
  if (session_ == nullptr) {
    return;
  }
  RecordedScan outcome = Outcome();
  const std::lock_guard guard(lock_);
  scan_.tree = std::move(outcome.tree);
  scan_.objects = std::move(outcome.objects);
  scan_.systemStatus = outcome.systemStatus;
  scan_.number = ++ended_;
  scan_.took = Now() - scan_.begin;
  scan_.led = led;
  finished_.push_back(std::exchange(scan_, {}));
}

std::optional<RecordedScan> TrafficLog::Take() {
  const std::lock_guard guard(lock_);
  if (finished_.empty()) {
    return std::nullopt;
  }
  RecordedScan scan = std::move(finished_.front());
  finished_.pop_front();
  return scan;
}

}  // namespace emstatus::host
