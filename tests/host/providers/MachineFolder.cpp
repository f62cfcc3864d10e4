#include "tests/host/providers/MachineFolder.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "host/providers/RealFiles.h"
#include "host/providers/ValueText.h"

namespace emstatus::test {

using namespace host;

/// The machine's files with the faults that its folder was told of.
class ScriptedFiles final : public SystemFiles {
 public:
  explicit ScriptedFiles(MachineFolder& machine)
      : machine_(machine), real_(machine.folder_.File("sys"), machine.folder_.File("proc")) {}

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
      const std::lock_guard lock(machine_.lock_);
      const auto room = machine_.rooms_.find(path);
      return room == machine_.rooms_.end() ? FileResult<FilesystemRoom>{{}, ENOENT}
                                           : FileResult<FilesystemRoom>{room->second, 0};
    });
  }
  FileResult<bool> WriteAttribute(const std::string& path, const std::string& text) override {
    return Run<bool>(path, [&] { return real_.WriteAttribute(path, text); });
  }
  FileResult<int> OpenForPoll(const std::string& path) override {
    return Run<int>(path, [&] { return real_.OpenForPoll(path); });
  }

 private:
  template <typename Value, typename Call>
  FileResult<Value> Run(const std::string& path, const Call& call) {
    const int error = machine_.Enter(path);
    auto result = error != 0 ? FileResult<Value>{Value{}, error} : call();
    machine_.Leave(path);
    return result;
  }

  MachineFolder& machine_;
  RealFiles real_;
};

MachineFolder::~MachineFolder() {
  Release();
  std::unique_lock lock(lock_);
  changed_.wait(lock, [this] { return inside_ == 0; });
}

void MachineFolder::Write(const FileTable& files) {
  for (const auto& [path, text] : files) {
    const std::string file = folder_.File(path.substr(1));
    if (!text.starts_with("-> ")) {
      folder_.Write(path.substr(1), text);
      continue;
    }
    const std::filesystem::path target = folder_.File(text.substr(4));
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::filesystem::create_directories(target);
    std::filesystem::create_directory_symlink(target, file);
  }
}

void MachineFolder::Remove(const std::string& path) {
  std::filesystem::remove_all(folder_.File(path.substr(1)));
}

void MachineFolder::Fail(const std::string& path, int error) {
  const std::lock_guard lock(lock_);
  errors_[path] = error;
}

void MachineFolder::Hang(const std::string& path) {
  const std::lock_guard lock(lock_);
  hanging_.insert(path);
}

void MachineFolder::WaitUntilHanging(const std::string& path) {
  std::unique_lock lock(lock_);
  changed_.wait(lock, [&] { return hung_.contains(path); });
}

void MachineFolder::Release() {
  std::unique_lock lock(lock_);
  hanging_.clear();
  changed_.notify_all();
  changed_.wait(lock, [this] { return hung_.empty(); });
}

void MachineFolder::ClearOnRead(const std::string& path) {
  const std::lock_guard lock(lock_);
  clearing_.insert(path);
}

void MachineFolder::SetRoom(const std::string& mountPoint, const FilesystemRoom& room) {
  const std::lock_guard lock(lock_);
  rooms_[mountPoint] = room;
}

int MachineFolder::TakeReads(const std::string& path) {
  const std::lock_guard lock(lock_);
  return std::exchange(reads_[path], 0);
}

std::string MachineFolder::Text(const std::string& path) const {
  return folder_.Read(path.substr(1));
}

FilesFactory MachineFolder::Factory() {
  return [this] { return std::make_unique<ScriptedFiles>(*this); };
}

int MachineFolder::Enter(const std::string& path) {
  std::unique_lock lock(lock_);
  ++reads_[path];
  ++inside_;
  if (hanging_.contains(path)) {
    hung_.insert(path);
    changed_.notify_all();
    changed_.wait(lock, [&] { return !hanging_.contains(path); });
    hung_.erase(path);
    changed_.notify_all();
  }
  const auto error = errors_.find(path);
  return error == errors_.end() ? 0 : error->second;
}

void MachineFolder::Leave(const std::string& path) {
  const std::lock_guard lock(lock_);
  if (clearing_.contains(path)) {
    folder_.Write(path.substr(1), "0");
  }
  --inside_;
  changed_.notify_all();
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

std::vector<Reading> ReadAt(Provider& provider, double seconds) {
  const auto since =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(seconds));
  ReadContext context;
  context.now = std::chrono::steady_clock::time_point(std::chrono::hours(24)) + since;
  context.wallTime = std::chrono::system_clock::time_point(std::chrono::hours(24 * 365 * 55)) + since;
  return provider.Read(context);
}

}  // namespace emstatus::test
