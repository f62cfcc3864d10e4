#include "platform/TraceIniSection.h"

#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <new>

namespace emstatus {
namespace {

constexpr std::size_t kSpareBytes = 16;

class File {
 public:
  explicit File(const char* path) : descriptor_(open(path, O_RDONLY | O_CLOEXEC)) {}
  ~File() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ssize_t Read(char* to, std::size_t size) const {
    return descriptor_ < 0 ? -1 : read(descriptor_, to, size);
  }

 private:
  const int descriptor_;
};

bool Newer(const timespec& a, const timespec& b) {
  return a.tv_sec != b.tv_sec ? a.tv_sec > b.tv_sec : a.tv_nsec > b.tv_nsec;
}

bool EqualsIgnoringCase(const char* begin, const char* end, const char* word) {
  const auto length = static_cast<std::size_t>(end - begin);
  return length == std::strlen(word) && strncasecmp(begin, word, length) == 0;
}

}  // namespace

bool TraceIniSection::Read(const char* section, const char* file, const char* directory) {
  if (!Known()) {
    std::string path = std::string(directory) + "/" + file;
    struct stat status {};
    // Anything but a plain file could block the reader.
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
      Drop();
      return false;
    }
    path_ = std::move(path);
    size_ = status.st_size;
    modified_ = status.st_mtim;
  }
  return Read(section);
}

bool TraceIniSection::Read(const char* section) {
  if (Known() && ReadFile() && CutOffEndSection() && FindSection(section)) return true;
  Drop();
  return false;
}

TraceIniSection::Change TraceIniSection::Look() {
  if (!Known()) return Change::kNone;
  struct stat status {};
  if (stat(path_.c_str(), &status) != 0) return Change::kVanished;
  if (!Newer(status.st_mtim, modified_)) return Change::kNone;
  size_ = status.st_size;
  modified_ = status.st_mtim;
  return S_ISREG(status.st_mode) ? Change::kNewer : Change::kVanished;
}

void TraceIniSection::Drop() {
  buffer_.reset();
  text_ = nullptr;
  path_.clear();
  size_ = 0;
  modified_ = {};
}

bool TraceIniSection::ReadFile() {
  const auto size = static_cast<std::size_t>(size_);
  buffer_.reset(new (std::nothrow) char[size + kSpareBytes]());
  if (!buffer_) return false;
  return File(path_.c_str()).Read(buffer_.get(), size) == static_cast<ssize_t>(size);
}

bool TraceIniSection::CutOffEndSection() {
  char* const text = buffer_.get();
  char* const close = static_cast<char*>(memrchr(text, ']', static_cast<std::size_t>(size_)));
  if (close == nullptr) return false;
  char* const open = static_cast<char*>(memrchr(text, '[', static_cast<std::size_t>(close - text)));
  if (open == nullptr || !EqualsIgnoringCase(open + 1, close, "EndOfFile")) return false;
  *open = '\0';
  return true;
}

bool TraceIniSection::FindSection(const char* section) {
  char* text = buffer_.get();
  while ((text = std::strchr(text, '[')) != nullptr) {
    char* const close = std::strchr(text, ']');
    if (close == nullptr) return false;
    const bool wanted = EqualsIgnoringCase(text + 1, close, section);
    text = close + 1;
    if (!wanted) continue;
    text[std::strcspn(text, "[")] = '\0';
    text_ = text;
    return true;
  }
  return false;
}

bool TraceIniSection::Find(const char* key, std::uint32_t& value) const {
  if (text_ == nullptr) return false;
  const char* const found = std::strstr(text_, key);
  const char* from = found != nullptr ? std::strchr(found + std::strlen(key), '=') : nullptr;
  if (from == nullptr) return false;
  do {
    ++from;
  } while (std::isspace(static_cast<unsigned char>(*from)) != 0);
  char number[64];
  const std::size_t length = std::min(std::strcspn(from, "\n"), sizeof number - 1);
  std::memcpy(number, from, length);
  number[length] = '\0';
  value = static_cast<std::uint32_t>(std::strtoul(number, nullptr, 0));
  return true;
}

}  // namespace emstatus
