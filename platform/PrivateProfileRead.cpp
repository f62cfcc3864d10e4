#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/CDebugClient.h"
#include "platform/FileDescriptor.h"
#include "platform/PrivateProfile.h"
#include "platform/ProfileLineReader.h"

namespace emstatus {

namespace {

std::string_view TrimLeft(std::string_view text) {
  while (!text.empty() && IsProfileBlank(text.front())) text.remove_prefix(1);
  return text;
}

std::string_view TrimRight(std::string_view text) {
  while (!text.empty() && IsProfileBlank(text.back())) text.remove_suffix(1);
  return text;
}

/// What of a line counts: without comment, surrounding blanks, and anything after a zero byte.
std::string_view ReadContent(std::string_view line) {
  line = line.substr(0, line.find('\0'));
  return TrimRight(TrimLeft(line.substr(0, line.find(';'))));
}

/// The caller's buffer while it is filled. Lists are written entry by entry.
class Output {
 public:
  Output(char* buffer, std::uint32_t size) : buffer_(buffer), size_(size) { buffer_[0] = '\0'; }

  /// No room for one more entry and the zero that ends the list.
  bool IsFull() const { return position_ + 2 >= size_; }

  void AddEntry(std::string_view name) {
    Copy(name, size_ - 1 - position_);
    position_ += name.size() + 1;
  }

  void AddValue(std::string_view value) {
    Copy(value, size_);
    position_ += value.size();
  }

  std::uint32_t FinishList() {
    if (position_ >= size_) position_ = size_ - 2;
    return Finish();
  }

  std::uint32_t FinishValue(const char* defaultText) {
    if (position_ == 0 && defaultText != nullptr) AddValue(defaultText);
    if (position_ >= size_) position_ = size_ - 1;
    return Finish();
  }

 private:
  void Copy(std::string_view text, std::size_t room) {
    const std::size_t length = std::min(text.size(), room);
    std::memcpy(buffer_ + position_, text.data(), length);
    if (length < room) buffer_[position_ + length] = '\0';
    buffer_[size_ - 1] = '\0';
  }

  std::uint32_t Finish() {
    buffer_[position_] = '\0';
    return static_cast<std::uint32_t>(position_);
  }

  char* const buffer_;
  const std::size_t size_;
  std::size_t position_ = 0;
};

void ListSections(ProfileLineReader& reader, Output& output) {
  std::string_view line;
  while (!output.IsFull() && reader.NextHeader(line)) {
    const std::string_view content = ReadContent(line);
    const std::size_t close = content.find(']');
    if (close != std::string_view::npos) output.AddEntry(content.substr(1, close - 1));
  }
}

bool EnterSection(ProfileLineReader& reader, std::string_view section) {
  // A semicolon would begin a comment.
  if (section.find(';') != std::string_view::npos) return false;
  std::string_view line;
  return reader.NextHeader(line, std::string("[").append(section).append("]"));
}

/// Calls `use(key, value)` for each entry up to the next header, as long as it answers true.
template <typename Use>
void ReadEntries(ProfileLineReader& reader, Use use) {
  std::string_view line;
  while (reader.Next(line)) {
    const std::string_view content = ReadContent(line);
    if (content.starts_with('[')) return;
    const std::size_t equals = content.find('=');
    if (equals == std::string_view::npos) continue;
    if (!use(TrimRight(content.substr(0, equals)), TrimLeft(content.substr(equals + 1)))) return;
  }
}

void ListKeys(ProfileLineReader& reader, std::string_view section, Output& output) {
  if (output.IsFull() || !EnterSection(reader, section)) return;
  ReadEntries(reader, [&](std::string_view key, std::string_view) {
    output.AddEntry(key);
    return !output.IsFull();
  });
}

void ReadValue(ProfileLineReader& reader, std::string_view section, std::string_view wanted, Output& output) {
  if (output.IsFull() || !EnterSection(reader, section)) return;
  ReadEntries(reader, [&](std::string_view key, std::string_view value) {
    if (key != wanted) return true;
    output.AddValue(value);
    return false;
  });
}

}  // namespace

std::uint32_t GetPrivateProfileString(const char* section, const char* key, const char* defaultText,
                                      char* buffer, std::uint32_t size, const char* path) {
  if (size == 0) return 0;
  Output output(buffer, size);
  const bool isList = section == nullptr || key == nullptr;
  const FileDescriptor file(::open(path, O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) {
    EM_TRACE(4, "GetPrivateProfileString: Cannot open %s\n", path);
    return isList ? 0 : output.FinishValue(defaultText);
  }
  ProfileLineReader reader(file.Number());
  if (section == nullptr) {
    ListSections(reader, output);
  } else if (key == nullptr) {
    ListKeys(reader, section, output);
  } else {
    ReadValue(reader, section, key, output);
  }
  return isList ? output.FinishList() : output.FinishValue(defaultText);
}

std::uint32_t CheckedGetPrivateProfileString(const char* section, const char* key, const char* defaultText,
                                             char* buffer, std::uint32_t size, const char* path) {
  if (buffer == nullptr || path == nullptr) return 0;
  return GetPrivateProfileString(section, key, defaultText, buffer, size, path);
}

}  // namespace emstatus
