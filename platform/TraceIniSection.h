#pragma once

#include <sys/types.h>

#include <cstdint>
#include <ctime>
#include <memory>
#include <string>

namespace emstatus {

/// One section of a trace configuration file, with what is needed to see that the file has changed.
///
/// Such a file counts only when its last section is "[EndOfFile]": that says it was written completely.
/// Section names are compared without regard to case. Nothing here writes to the trace, and only the call
/// that stores the path can throw (std::bad_alloc). [one thread at a time]
class TraceIniSection {
 public:
  /// What has become of the file since it was last looked at.
  enum class Change { kNone, kNewer, kVanished };

  /// Reads the section; the first call stores the path `directory`/`file`, later ones use the stored path.
  /// False when file or section is not there or not complete; then the section is dropped.
  bool Read(const char* section, const char* file, const char* directory);

  /// Reads the section again from the stored path. Results as for the other Read().
  bool Read(const char* section);

  /// Looks at the file; stores size and time of a newer one, which is not read yet. kNone without a path.
  Change Look();

  /// Forgets text and path, so that Look() finds nothing any more.
  void Drop();

  /// Whether a path is stored.
  bool Known() const { return !path_.empty(); }
  const std::string& Path() const { return path_; }

  /// Finds the number (C notation) behind the first "=" after `key`, which is found anywhere in the text,
  /// also in the middle of a word. False, with `value` untouched, when either is not there.
  bool Find(const char* key, std::uint32_t& value) const;

 private:
  bool ReadFile();
  bool CutOffEndSection();
  bool FindSection(const char* section);

  // The whole file and some zeros; the section's text is a part of it that ends in a zero.
  std::unique_ptr<char[]> buffer_;
  const char* text_ = nullptr;
  std::string path_;
  off_t size_ = 0;
  timespec modified_{};
};

}  // namespace emstatus
