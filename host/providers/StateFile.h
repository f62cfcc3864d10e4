#pragma once

#include <map>
#include <string>

namespace emstatus::host {

/// A small file that keeps texts by name over restarts, replaced as a whole. [one thread]
class StateFile {
 public:
  using Entries = std::map<std::string, std::string>;

  /// `folder` empty: nothing is kept.
  StateFile(const std::string& folder, const std::string& name);

  /// What was kept; empty when there is no file, or nothing in it can be used. Errors other than a missing
  /// file, and lines that are no entry, are in Problem() afterwards. A file that cannot be read is not
  /// replaced either.
  Entries Load();

  /// Writes it when it differs from what was written or loaded last. The folder is made when it is missing.
  /// An error is in Problem() afterwards.
  void Save(const Entries& entries);

  /// What went wrong the last time ("/var/lib/emhost/memory: Permission denied"); empty when nothing did.
  const std::string& Problem() const { return problem_; }
  const std::string& Path() const { return path_; }

 private:
  void Fail(int error);
  bool Write(const std::string& text) const;

  const std::string folder_;
  const std::string path_;
  Entries written_;
  bool isUnreadable_ = false;
  std::string problem_;
};

}  // namespace emstatus::host
