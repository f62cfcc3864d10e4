// INI files, reading: every list and value, in buffers of many sizes, as a plain line-by-line reader gives
// it. The input is the file; its first line names one more section and, behind "=", one more key.

#include <algorithm>
#include <array>
#include <vector>

#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"
#include "platform/PrivateProfile.h"
#include "platform/ProfileFile.h"
#include "tests/platform/ReferenceProfileReader.h"

namespace emstatus::fuzz {
namespace {

using Names = std::vector<std::string>;

constexpr std::uint32_t kLargest = 8192;
constexpr std::array<std::uint32_t, 8> kSizes = {1, 2, 3, 4, 11, 64, 1024, kLargest};
/// Names tried of each list.
constexpr std::size_t kTried = 6;

class Comparison {
 public:
  explicit Comparison(const std::string& path) : path_(path) {}

  /// What the buffer received, compared.
  std::string Read(const char* section, const char* key, const char* fallback, std::uint32_t size) const {
    std::vector<char> buffer(size + 1, '#');
    const std::uint32_t length =
        GetPrivateProfileString(section, key, fallback, buffer.data(), size, path_.c_str());
    EM_FUZZ_CHECK(buffer[size] == '#');
    EM_FUZZ_CHECK(length < size && buffer[length] == '\0');
    const bool isList = section == nullptr || key == nullptr;
    const std::string found(buffer.data(), isList && length != 0 ? length + 1 : length);
    EM_FUZZ_CHECK(found == test::ReferenceProfileString(section, key, fallback, size, path_));
    return found;
  }

  /// The names of a list, read in every size of buffer.
  Names List(const char* section) const {
    std::string list;
    for (const std::uint32_t size : kSizes) list = Read(section, nullptr, nullptr, size);
    Names names;
    for (std::size_t at = 0; at + 1 < list.size() && names.size() < kTried;) {
      names.emplace_back(list.c_str() + at);
      at += names.back().size() + 1;
    }
    return names;
  }

 private:
  const std::string& path_;
};

/// The object gives what the function gives.
void CompareObject(ProfileFile& profile, const char* section, const char* key, const std::string& value) {
  std::string text;
  EM_FUZZ_CHECK(profile.GetString(text, section, key, "other") == 1);
  EM_FUZZ_CHECK(text == value);
  EM_FUZZ_CHECK(profile.GetValue(section, key, "other") == value);
  profile.GetInt(section, key, 7);
}

void CompareNames(ProfileFile& profile, const char* section, const Names& expected) {
  Names names;
  const bool any = section != nullptr ? profile.GetKeyNames(names, section) : profile.GetSectionNames(names);
  EM_FUZZ_CHECK(any == !names.empty());
  for (std::size_t i = 0; i < expected.size() && !expected[i].empty(); ++i) {
    EM_FUZZ_CHECK(i < names.size() && names[i] == expected[i]);
  }
}

void ReadAll(const std::string& path, std::string_view text) {
  const Comparison comparison(path);
  ProfileFile profile;
  EM_FUZZ_CHECK(profile.Open(path.c_str(), 1) == 1);
  const std::string firstLine(text.substr(0, std::min<std::size_t>(text.find('\n'), 64)));
  const std::size_t equals = std::min(firstLine.find('='), firstLine.size());
  Names sections = comparison.List(nullptr);
  CompareNames(profile, nullptr, sections);
  sections.push_back(firstLine.substr(0, equals));
  for (const std::string& section : sections) {
    Names keys = comparison.List(section.c_str());
    CompareNames(profile, section.c_str(), keys);
    keys.push_back(firstLine.substr(std::min(equals + 1, firstLine.size())));
    for (const std::string& key : keys) {
      comparison.Read(section.c_str(), key.c_str(), "default", kSizes[text.size() % kSizes.size()]);
      const std::string value = comparison.Read(section.c_str(), key.c_str(), "other", kLargest);
      CompareObject(profile, section.c_str(), key.c_str(), value);
    }
  }
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static emstatus::fuzz::MemoryFile file;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  file.Write(text);
  emstatus::fuzz::ReadAll(file.Path(), text);
  return 0;
}
