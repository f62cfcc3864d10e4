#pragma once

#include <chrono>
#include <condition_variable>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/providers/Provider.h"
#include "host/providers/ReadLanes.h"
#include "host/providers/SystemFiles.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::test {

/// A machine's /sys and /proc in a temporary folder, with faults on order. [any thread]
class MachineFolder {
 public:
  struct File {
    std::string path;
    std::string text;
  };
  using FileTable = std::vector<File>;

  MachineFolder() = default;
  explicit MachineFolder(const FileTable& files) { Write(files); }
  MachineFolder(const char* path, const char* text) { Write({File{path, text}}); }
  ~MachineFolder();

  /// Writes files ("/sys/..."); a text that starts with "-> " makes a link to that path of the machine.
  void Write(const FileTable& files);
  void Remove(const std::string& path);

  /// Every call on the path fails with `error` (0: works again).
  void Fail(const std::string& path, int error);
  /// Every call on the path hangs until Release().
  void Hang(const std::string& path);
  /// Waits until a call hangs on the path.
  void WaitUntilHanging(const std::string& path);
  void Release();
  /// The attribute becomes "0" when it is read.
  void ClearOnRead(const std::string& path);
  void SetRoom(const std::string& mountPoint, const host::FilesystemRoom& room);
  /// How often the path was read since the last call of this.
  int TakeReads(const std::string& path);
  std::string Text(const std::string& path) const;

  host::FilesFactory Factory();
  std::unique_ptr<host::SystemFiles> Files() { return Factory()(); }

 private:
  friend class ScriptedFiles;
  int Enter(const std::string& path);
  void Leave(const std::string& path);

  TemporaryDirectory folder_;
  std::mutex lock_;
  std::condition_variable changed_;
  int inside_ = 0;
  std::map<std::string, int> errors_;
  std::set<std::string> hanging_;
  std::set<std::string> hung_;
  std::set<std::string> clearing_;
  std::map<std::string, host::FilesystemRoom> rooms_;
  std::map<std::string, int> reads_;
};

using Texts = std::vector<std::string>;

/// "id state [value] [: reason]" with the state as a word; what the tables of expected readings hold.
std::string Line(const host::Reading& reading);
Texts Lines(const std::vector<host::Reading>& readings);

/// Reads a provider at `seconds` after an arbitrary start of time.
std::vector<host::Reading> ReadAt(host::Provider& provider, double seconds);

}  // namespace emstatus::test
