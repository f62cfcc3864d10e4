#include "platform/ProfileFile.h"

#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/FileDescriptor.h"
#include "platform/NullableText.h"
#include "platform/PrivateProfile.h"

namespace emstatus {

namespace {

constexpr std::uint32_t kBufferStep = 1024;
constexpr std::uint32_t kLargestBuffer = 65535;
constexpr std::size_t kNumberBuffer = 32;

}  // namespace

int ProfileFile::Open(const char* path, std::uint8_t checkExists) {
  if (path == nullptr) {
    fileName_.reset();
    isOpen_ = 0;
    return 0;
  }
  fileName_ = path;
  return Reopen(checkExists);
}

int ProfileFile::Reopen(std::uint8_t checkExists) {
  if (!fileName_) {
    isOpen_ = 0;
  } else if (checkExists == 0) {
    isOpen_ = 1;
  } else {
    const FileDescriptor file(::open(fileName_->c_str(), O_RDONLY | O_CLOEXEC));
    isOpen_ = file.IsOpen() ? checkExists : std::uint8_t{0};
  }
  return isOpen_;
}

bool ProfileFile::Buffer::Enlarge() {
  const std::uint32_t larger = size + kBufferStep;
  if (larger > kLargestBuffer) return false;
  bytes.reset(new (std::nothrow) char[larger]);
  size = bytes != nullptr ? larger : 0;
  return bytes != nullptr;
}

bool ProfileFile::ReadInto(Buffer& buffer, const char* section, const char* key,
                           const char* defaultText) const {
  while (buffer.size != 0 || buffer.Enlarge()) {
    const std::uint32_t length = GetPrivateProfileString(section, key, defaultText, buffer.bytes.get(),
                                                         buffer.size, fileName_->c_str());
    if (length + 2 < buffer.size) return true;
    if (!buffer.Enlarge()) break;
  }
  buffer = {};
  return false;
}

int ProfileFile::GetInt(const char* section, const char* key, int defaultValue) {
  if (isOpen_ == 0 || section == nullptr || key == nullptr) return defaultValue;
  char text[kNumberBuffer];
  if (GetPrivateProfileString(section, key, nullptr, text, sizeof text, fileName_->c_str()) == 0) {
    return defaultValue;
  }
  return static_cast<int>(static_cast<std::uint32_t>(std::strtoul(text, nullptr, 0)));
}

int ProfileFile::GetString(std::string& out, const char* section, const char* key, const char* defaultText) {
  if (isOpen_ == 0 || section == nullptr || key == nullptr) return 0;
  Buffer buffer;
  const bool complete = ReadInto(buffer, section, key, OrEmpty(defaultText));
  out = complete ? buffer.bytes.get() : OrEmpty(defaultText);
  return complete ? 1 : 0;
}

const char* ProfileFile::GetValue(const char* section, const char* key, const char* defaultText) {
  const bool readable = isOpen_ != 0 && section != nullptr && key != nullptr;
  if (!readable || !ReadInto(value_, section, key, OrEmpty(defaultText))) return OrEmpty(defaultText);
  return value_.bytes.get();
}

const char* ProfileFile::GetList(const char* section) {
  if (isOpen_ == 0) return "";
  const bool complete = ReadInto(list_, section, nullptr, nullptr);
  listCursor_ = list_.bytes.get();
  return complete ? listCursor_ : "";
}

const char* ProfileFile::NextListEntry() {
  if (isOpen_ == 0 || listCursor_ == nullptr) return "";
  if (*listCursor_ != '\0') listCursor_ += std::strlen(listCursor_) + 1;
  return listCursor_;
}

bool ProfileFile::AppendNames(std::vector<std::string>& names, const char* section) {
  const char* name = GetList(section);
  const bool any = *name != '\0';
  for (; *name != '\0'; name = NextListEntry()) names.emplace_back(name);
  return any;
}

bool ProfileFile::GetKeyNames(std::vector<std::string>& names, const char* section) {
  return section != nullptr && AppendNames(names, section);
}

bool ProfileFile::GetSectionNames(std::vector<std::string>& names) {
  return AppendNames(names, nullptr);
}

int ProfileFile::WriteString(const char* section, const char* key, const char* value) {
  if (isOpen_ == 0 || section == nullptr) return 0;
  return WritePrivateProfileString(section, key, value, fileName_->c_str()) ? 1 : 0;
}

int ProfileFile::WriteUInt(const char* section, const char* key, unsigned value) {
  if (section == nullptr || key == nullptr) return 0;
  char text[30];
  std::snprintf(text, sizeof text, "%u", value);
  return WriteString(section, key, text);
}

int ProfileFile::WriteInt(const char* section, const char* key, int value) {
  if (section == nullptr || key == nullptr) return 0;
  char text[30];
  std::snprintf(text, sizeof text, "%d", value);
  return WriteString(section, key, text);
}

int ProfileFile::DeleteSection(const char* section) {
  const char* const path = fileName_ ? fileName_->c_str() : nullptr;
  if (isOpen_ == 0 && section != nullptr && path != nullptr) return 0;
  return CheckedWritePrivateProfileString(section, nullptr, nullptr, path) ? 1 : 0;
}

int ProfileFile::DeleteKey(const char* section, const char* key) {
  // Without a key it would be the section that goes.
  if (key == nullptr) return 0;
  const char* const path = fileName_ ? fileName_->c_str() : nullptr;
  if (isOpen_ == 0 && section != nullptr && path != nullptr) return 0;
  return CheckedWritePrivateProfileString(section, key, nullptr, path) ? 1 : 0;
}

std::uint8_t ProfileFile::CopySection(const char* source, const char* target) {
  const std::uint8_t wasOpen = isOpen_;
  if (source == nullptr || target == nullptr) return wasOpen;
  const char* key = GetList(source);
  for (; *key != '\0' && isOpen_ != 0; key = NextListEntry()) {
    WriteString(target, key, GetValue(source, key, ""));
  }
  return wasOpen;
}

}  // namespace emstatus
