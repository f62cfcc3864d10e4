#include "tests/host/providers/MachineFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "host/providers/PathInCopy.h"
#include "host/providers/RealFiles.h"
#include "host/providers/ValueText.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {

using namespace host;

struct MachineFolder::State {
  int Enter(const std::string& path);
  void Leave(const std::string& path);
  /// The machine's path as a name in the folder, with links followed as the machine does.
  std::string Place(const std::string& path, bool followLast = true) const;

  TemporaryDirectory folder;
  std::mutex lock;
  std::condition_variable changed;
  // All guarded by lock
  std::map<std::string, int> errors;
  std::set<std::string> hanging;
  std::set<std::string> hung;
  std::set<std::string> clearing;
  std::map<std::string, FilesystemRoom> rooms;
  std::map<std::string, int> reads;
};

/// The machine's files with the faults that its folder was told of.
class ScriptedFiles final : public SystemFiles {
 public:
  explicit ScriptedFiles(std::shared_ptr<MachineFolder::State> machine)
      : machine_(std::move(machine)), real_(machine_->folder.Path().string()) {}

  FileResult<std::string> ReadAttribute(const std::string& path) override {
    return Run<std::string>(path, [&] { return real_.ReadAttribute(path); });
  }
  FileResult<std::string> ReadText(const std::string& path, std::size_t limit) override {
    return Run<std::string>(path, [&] { return real_.ReadText(path, limit); });
  }
  FileResult<std::vector<std::string>> List(const std::string& path) override {
    return Run<std::vector<std::string>>(path, [&] { return real_.List(path); });
  }
  FileResult<std::vector<FolderEntry>> ListEntries(const std::string& path) override {
    return Run<std::vector<FolderEntry>>(path, [&] { return real_.ListEntries(path); });
  }
  FileResult<std::string> ReadLink(const std::string& path) override {
    return Run<std::string>(path, [&] { return real_.ReadLink(path); });
  }
  FileResult<std::string> RealPath(const std::string& path) override { return real_.RealPath(path); }
  FileResult<FilesystemRoom> Room(const std::string& path) override {
    return Run<FilesystemRoom>(path, [&]() -> FileResult<FilesystemRoom> {
      const std::lock_guard lock(machine_->lock);
      const auto room = machine_->rooms.find(path);
      return room == machine_->rooms.end() ? FileResult<FilesystemRoom>{{}, ENOENT}
                                           : FileResult<FilesystemRoom>{room->second, 0};
    });
  }
  FileResult<bool> WriteAttribute(const std::string& path, const std::string& text) override {
    return Run<bool>(path, [&]() -> FileResult<bool> {
      machine_->folder.Write(machine_->Place(path), text);
      return {true, 0};
    });
  }
  FileResult<int> OpenForPoll(const std::string& path) override {
    return Run<int>(path, [&] { return real_.OpenForPoll(path); });
  }

 private:
  template <typename Value, typename Call>
  FileResult<Value> Run(const std::string& path, const Call& call) {
    const int error = machine_->Enter(path);
    auto result = error != 0 ? FileResult<Value>{Value{}, error} : call();
    machine_->Leave(path);
    return result;
  }

  const std::shared_ptr<MachineFolder::State> machine_;
  RealFiles real_;
};

MachineFolder::MachineFolder() : state_(std::make_shared<State>()) {}

MachineFolder::~MachineFolder() {
  Release();
}

void MachineFolder::Write(const FileTable& files) {
  for (const auto& [path, text] : files) {
    if (!text.starts_with("-> ")) {
      state_->folder.Write(state_->Place(path), text);
      continue;
    }
    const std::string file = state_->folder.File(state_->Place(path, false));
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::filesystem::create_symlink(text.substr(3), file);
    if (text.starts_with("-> /")) {
      std::filesystem::create_directories(state_->folder.File(text.substr(4)));
    }
  }
}

void MachineFolder::Remove(const std::string& path) {
  std::filesystem::remove_all(state_->folder.File(state_->Place(path, false)));
}

void MachineFolder::Fail(const std::string& path, int error) {
  const std::lock_guard lock(state_->lock);
  state_->errors[state_->Place(path)] = error;
}

void MachineFolder::Hang(const std::string& path) {
  const std::lock_guard lock(state_->lock);
  state_->hanging.insert(state_->Place(path));
}

void MachineFolder::WaitUntilHanging(const std::string& path) {
  const std::string place = state_->Place(path);
  std::unique_lock lock(state_->lock);
  state_->changed.wait(lock, [&] { return state_->hung.contains(place); });
}

void MachineFolder::Release() {
  std::unique_lock lock(state_->lock);
  state_->hanging.clear();
  state_->changed.notify_all();
  state_->changed.wait(lock, [this] { return state_->hung.empty(); });
}

void MachineFolder::ClearOnRead(const std::string& path) {
  const std::lock_guard lock(state_->lock);
  state_->clearing.insert(state_->Place(path));
}

void MachineFolder::SetRoom(const std::string& mountPoint, const FilesystemRoom& room) {
  const std::lock_guard lock(state_->lock);
  state_->rooms[mountPoint] = room;
}

int MachineFolder::TakeReads(const std::string& path) {
  const std::lock_guard lock(state_->lock);
  return std::exchange(state_->reads[state_->Place(path)], 0);
}

std::string MachineFolder::Text(const std::string& path) const {
  return state_->folder.Read(state_->Place(path));
}

std::string MachineFolder::Path() const {
  return state_->folder.Path().string();
}

FilesFactory MachineFolder::Factory() {
  return [state = state_] { return std::make_unique<ScriptedFiles>(state); };
}

int MachineFolder::State::Enter(const std::string& path) {
  const std::string place = Place(path);
  std::unique_lock guard(lock);
  ++reads[place];
  if (hanging.contains(place)) {
    hung.insert(place);
    changed.notify_all();
    changed.wait(guard, [&] { return !hanging.contains(place); });
    hung.erase(place);
    changed.notify_all();
  }
  const auto error = errors.find(place);
  return error == errors.end() ? 0 : error->second;
}

void MachineFolder::State::Leave(const std::string& path) {
  const std::string place = Place(path);
  const std::lock_guard guard(lock);
  if (clearing.contains(place)) {
    folder.Write(place, "0");
  }
}

std::string MachineFolder::State::Place(const std::string& path, bool followLast) const {
  const FileResult<std::string> place = PathInCopy(folder.Path().string(), path, followLast);
  return (place ? place.value : path).substr(1);
}

std::string Line(const Reading& reading) {
  static constexpr const char* kConditions[] = {"good", "warning", "critical"};
  static constexpr const char* kQualities[] = {"", "late", "sensor-fault", "implausible", "inactive", "lost"};
  std::string line = reading.id + " ";
  line += reading.quality == Quality::Good ? kConditions[static_cast<int>(reading.condition)]
                                           : kQualities[static_cast<int>(reading.quality)];
  if (reading.measurement) {
    line += " " + ValueText(reading.measurement->value, reading.measurement->unit);
  }
  return line + (reading.reason.empty() ? "" : ": " + reading.reason);
}

std::vector<std::string> Lines(const std::vector<Reading>& readings) {
  std::vector<std::string> lines;
  for (const Reading& reading : readings) {
    lines.push_back(Line(reading));
    EXPECT_FALSE(reading.name.empty()) << lines.back();
    const bool isKnown = reading.quality == Quality::Good;
    EXPECT_TRUE(isKnown || !reading.measurement) << "a value that is not known: " << lines.back();
    EXPECT_TRUE((isKnown && reading.condition == Condition::Good) || !reading.reason.empty())
        << "no reason: " << lines.back();
  }
  return lines;
}

std::chrono::steady_clock::time_point At(double seconds) {
  return std::chrono::steady_clock::time_point(std::chrono::hours(24)) +
         std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
}

std::vector<Reading> ReadAt(Provider& provider, double seconds) {
  ReadContext context;
  context.now = At(seconds);
  context.wallTime =
      std::chrono::system_clock::time_point(std::chrono::hours(24 * 365 * 55)) + (At(seconds) - At(0));
  return provider.Read(context);
}

Texts ReadUntil(Provider& provider, double seconds, const Texts& expected) {
  Texts lines;
  for (int tries = 0; tries < 500 && lines != expected; ++tries) {
    lines = Lines(ReadAt(provider, seconds));
  }
  return lines;
}

}  // namespace emstatus::test
