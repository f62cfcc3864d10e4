#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// SystemFiles on this machine, or on a copy of another one's /sys and /proc. Attributes stay open between
/// reads, at most kKeptFiles of them. In a copy, which may lie on anything, none stays open, because closing
/// it might block; only plain files are read (ENXIO for anything that might block), nothing is written
/// (EROFS), and the room of a filesystem is not known (EOPNOTSUPP).
class RealFiles final : public SystemFiles {
 public:
  static constexpr std::size_t kKeptFiles = 512;

  /// `copy`: the folder that holds the copy; empty for this machine.
  explicit RealFiles(std::string copy = "");
  ~RealFiles() override;

  FileResult<std::string> ReadAttribute(const std::string& path) override;
  FileResult<std::string> ReadText(const std::string& path, std::size_t limit) override;
  FileResult<std::vector<std::string>> List(const std::string& path) override;
  FileResult<std::vector<FolderEntry>> ListEntries(const std::string& path) override;
  FileResult<std::string> ReadLink(const std::string& path) override;
  FileResult<std::string> RealPath(const std::string& path) override;
  FileResult<FilesystemRoom> Room(const std::string& path) override;
  FileResult<bool> WriteAttribute(const std::string& path, const std::string& text) override;
  FileResult<int> OpenForPoll(const std::string& path) override;

 private:
  FileResult<std::string> Map(const std::string& path, bool followLast = true) const;
  FileResult<int> Open(const std::string& mapped) const;
  FileResult<int> KeptDescriptor(const std::string& path);
  void Forget(const std::string& path);

  const std::string copy_;
  std::map<std::string, int, std::less<>> kept_;
};

}  // namespace emstatus::host
