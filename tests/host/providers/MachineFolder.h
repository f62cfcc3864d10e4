#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "host/providers/Provider.h"
#include "host/providers/ReadLanes.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::test {

/// A machine's /sys and /proc in a temporary folder, with faults on order. [any thread]
class MachineFolder {
 public:
  struct File {
    std::string path;
    std::string text;
  };
  using FileTable = std::vector<File>;

  MachineFolder();
  explicit MachineFolder(const FileTable& files) : MachineFolder() { Write(files); }
  MachineFolder(const char* path, const char* text) : MachineFolder() { Write({File{path, text}}); }
  ~MachineFolder();

  /// Writes files ("/sys/..."); a text that starts with "-> " makes a link to that path of the machine.
  void Write(const FileTable& files);
  void Remove(const std::string& path);

  // Below, a path stands for what it leads to through links, as they are then.

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
  /// Where the machine is, without any fault on order.
  std::string Path() const;

  host::FilesFactory Factory();
  std::unique_ptr<host::SystemFiles> Files() { return Factory()(); }

 private:
  struct State;
  friend class ScriptedFiles;

  // Shared with the files that were made: a read that hung goes on after its test has ended
  std::shared_ptr<State> state_;
};

using Texts = std::vector<std::string>;

/// "id state [value] [: reason]" with the state as a word; what the tables of expected readings hold.
std::string Line(const host::Reading& reading);
Texts Lines(const std::vector<host::Reading>& readings);

/// More than any read takes that does not hang, however busy the machine of the test is; and less than one
/// that hangs.
inline constexpr std::chrono::milliseconds kPatient{60000};
inline constexpr std::chrono::milliseconds kImpatient{20};

/// The moment `seconds` after an arbitrary start of time.
std::chrono::steady_clock::time_point At(double seconds);

/// Reads a provider at that moment.
std::vector<host::Reading> ReadAt(host::Provider& provider, double seconds);

/// The same again and again, for an impatient provider, until it tells `expected` or never will; what it told
/// last.
Texts ReadUntil(host::Provider& provider, double seconds, const Texts& expected);

}  // namespace emstatus::test
