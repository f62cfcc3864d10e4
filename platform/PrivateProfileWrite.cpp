#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "platform/CDebugClient.h"
#include "platform/FileDescriptor.h"
#include "platform/PrivateProfile.h"
#include "platform/ProfileLineReader.h"

namespace emstatus {

namespace {

constexpr mode_t kNewFileMode = 0644;

/// A part of a file, from its first byte to the one after its last.
struct Region {
  std::uint64_t start;
  std::uint64_t end;
};

enum class Place {
  kRegion,        // what is to be replaced or removed is here; an empty region is where an entry goes
  kEndOfSection,  // the section is the last one of the file
  kNoSection,     // nothing of the wanted section is in the file
  kNothingToRemove
};

struct Finding {
  Place place;
  Region region{};
  bool leadingLineFeed = false;
};

/// What a line says when it is changed. Unlike in reading, blanks in front count, and the last character is
/// taken to be the line feed, also where the file ends without one.
std::string_view ChangedContent(std::string_view line) {
  line.remove_suffix(1);
  return line.substr(0, line.find('\0'));
}

std::string_view KeyOf(std::string_view content, std::size_t equals) {
  std::string_view key = content.substr(0, equals);
  while (key.ends_with(' ') || key.ends_with('\t')) key.remove_suffix(1);
  return key;
}

std::string EntryLine(std::string_view key, std::string_view value) {
  return std::string(key).append("=").append(value).append("\n");
}

std::string NewSection(const char* section, const char* key, const char* value) {
  return std::string("\n[").append(section).append("]\n\n").append(EntryLine(key, value));
}

/// Where in the file the change takes place.
class PlaceFinder {
 public:
  PlaceFinder(const char* section, const char* key, const char* value)
      : section_(section), key_(key), value_(value) {}

  Finding Find(ProfileLineReader& reader) {
    std::string_view line;
    while (reader.Next(line)) {
      const std::string_view content = ChangedContent(line);
      if (content.empty() || content.front() == ';') continue;
      if (content.front() == '[') {
        if (inside_) return AtNextHeader(reader.LineStart());
        inside_ = IsProfileHeaderOf(content, section_);
        sectionStart_ = reader.LineStart();
      } else if (inside_ && IsWantedEntry(content)) {
        // The line feed in front adds an empty line with every change of a section's first entry.
        return {
            Place::kRegion, {reader.LineStart(), reader.LineEnd()}, value_ != nullptr && linesInside_ <= 1};
      }
    }
    return AtEnd(reader.LineEnd());
  }

 private:
  bool Adds() const { return key_ != nullptr && value_ != nullptr; }

  bool IsWantedEntry(std::string_view content) {
    ++linesInside_;
    const std::size_t equals = content.find('=');
    return key_ != nullptr && equals != std::string_view::npos && KeyOf(content, equals) == key_;
  }

  Finding AtNextHeader(std::uint64_t header) const {
    if (key_ == nullptr) return {Place::kRegion, {sectionStart_, header}};
    if (value_ != nullptr) return {Place::kRegion, {header, header}};
    return {Place::kNothingToRemove};
  }

  Finding AtEnd(std::uint64_t end) const {
    if (Adds()) return {inside_ ? Place::kEndOfSection : Place::kNoSection};
    if (inside_ && key_ == nullptr) return {Place::kRegion, {sectionStart_, end}};
    return {Place::kNothingToRemove};
  }

  const char* const section_;
  const char* const key_;
  const char* const value_;
  bool inside_ = false;
  std::uint64_t sectionStart_ = 0;
  unsigned linesInside_ = 0;
};

bool ReadAll(int file, std::string& text, std::uint64_t from) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t got =
        ::pread(file, text.data() + done, text.size() - done, static_cast<off_t>(from + done));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    done += static_cast<std::size_t>(got);
  }
  return true;
}

/// Puts `text` in the place of `region`; what follows moves.
bool Rewrite(const FileDescriptor& file, const Region& region, std::string text) {
  struct stat status;
  if (::fstat(file.Number(), &status) != 0) return false;
  const auto size = static_cast<std::uint64_t>(status.st_size);
  if (size < region.end) return false;
  std::string rest(size - region.end, '\0');
  if (!ReadAll(file.Number(), rest, region.end)) return false;
  if (::lseek(file.Number(), static_cast<off_t>(region.start), SEEK_SET) < 0) return false;
  text += rest;
  return file.Write(text) && ::ftruncate(file.Number(), static_cast<off_t>(region.start + text.size())) == 0;
}

enum class Mode { kLeave, kSet };

bool Append(const char* path, std::string_view text, Mode mode) {
  const FileDescriptor file(::open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kNewFileMode));
  if (!file.IsOpen()) {
    EM_TRACE(1, "WritePrivateProfileString: ## WARNING: append open error: %s\n", path);
    return false;
  }
  if (mode == Mode::kSet) ::fchmod(file.Number(), kNewFileMode);
  return file.Write(text);
}

bool Change(const FileDescriptor& file, const char* section, const char* key, const char* value,
            const char* path) {
  ProfileLineReader reader(file.Number());
  const Finding found = PlaceFinder(section, key, value).Find(reader);
  switch (found.place) {
    case Place::kRegion: {
      std::string text = found.leadingLineFeed ? "\n" : "";
      if (key != nullptr && value != nullptr) text += EntryLine(key, value);
      return Rewrite(file, found.region, std::move(text));
    }
    case Place::kEndOfSection:
      return Append(path, EntryLine(key, value), Mode::kLeave);
    case Place::kNoSection:
      return Append(path, NewSection(section, key, value), Mode::kLeave);
    case Place::kNothingToRemove:
      break;
  }
  return false;
}

}  // namespace

bool WritePrivateProfileString(const char* section, const char* key, const char* value, const char* path) {
  EM_TRACE(4, "WritePrivateProfileString(%s, %s, %s, %s)\n", section, key != nullptr ? key : "<nil>",
           value != nullptr ? value : "<nil>", path);
  const FileDescriptor file(::open(path, O_RDWR | O_CLOEXEC));
  bool done;
  if (file.IsOpen()) {
    done = Change(file, section, key, value, path);
  } else if (key == nullptr || value == nullptr) {
    return true;
  } else {
    done = Append(path, NewSection(section, key, value), Mode::kSet);
    if (!done) return false;
  }
  EM_TRACE(4, "WritePrivateProfileString rc=0x%04x\n", done ? 1U : 0U);
  return done;
}

bool CheckedWritePrivateProfileString(const char* section, const char* key, const char* value,
                                      const char* path) {
  if (section == nullptr) {
    EM_TRACE(1, "WritePrivateProfileString: ## WARNING: invalid pointer to AppName\n");
    return false;
  }
  if (path == nullptr) {
    EM_TRACE(1, "WritePrivateProfileString: ## WARNING: invalid pointer to FileName\n");
    return false;
  }
  return WritePrivateProfileString(section, key, value, path);
}

}  // namespace emstatus
