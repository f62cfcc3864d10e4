#pragma once

#include <map>
#include <string>
#include <vector>

#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// SystemFiles on this machine, or on a copy of its /sys and /proc elsewhere. Attributes stay open between
/// reads, at most kKeptFiles of them.
class RealFiles final : public SystemFiles {
 public:
  static constexpr std::size_t kKeptFiles = 512;

  /// `sysRoot` and `procRoot` stand in for "/sys" and "/proc"; no slash at their end.
  explicit RealFiles(std::string sysRoot = "/sys", std::string procRoot = "/proc");
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
  std::string Map(const std::string& path) const;
  FileResult<int> KeptDescriptor(const std::string& mapped);
  void Forget(const std::string& mapped);

  std::string sysRoot_;
  std::string procRoot_;
  std::map<std::string, int, std::less<>> kept_;
};

}  // namespace emstatus::host
