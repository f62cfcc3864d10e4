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
  /// file are in Problem() afterwards.
  Entries Load();

  /// Writes it when it differs from what was written or loaded last. The folder is made when it is missing.
  /// An error is in Problem() afterwards.
  void Save(const Entries& entries);

  /// What went wrong the last time ("/var/lib/emhost/memory: Permission denied"); empty when nothing did.
  const std::string& Problem() const { return problem_; }

 private:
  void Fail(int error);

  const std::string folder_;
  const std::string path_;
  Entries written_;
  std::string problem_;
};

}  // namespace emstatus::host
