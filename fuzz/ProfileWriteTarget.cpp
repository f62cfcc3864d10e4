// INI files, changes in place: on any file at most one line or section is touched; on a well-formed one what
// was set reads back and everything else reads as before.
// The input is some changes (operation, section, key, value) and the file.

#include <algorithm>
#include <map>
#include <vector>

#include "fuzz/ByteSource.h"
#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"
#include "platform/PrivateProfile.h"
#include "platform/ProfileFile.h"

namespace emstatus::fuzz {
namespace {

using Names = std::vector<std::string>;

constexpr std::size_t kLongestLine = 1023;

enum class Operation { kSet, kDeleteKey, kDeleteSection, kCopySection };

struct Change {
  Operation operation;
  std::string section;
  std::string key;
  std::string value;
};

bool IsPlain(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) >= ' '; });
}

/// A file that reading and changing take alike: no blanks in front of a line, no control characters, every
/// line with its line feed.
bool IsTameFile(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    if (end >= kLongestLine) return false;
    if (text.front() == ' ' || !IsPlain(text.substr(0, end))) return false;
    text.remove_prefix(end + 1);
  }
  return true;
}

bool IsTameText(std::string_view text) {
  return !text.empty() && IsPlain(text) && text.find(';') == std::string_view::npos && text.front() != ' ' &&
         text.back() != ' ';
}

bool IsTameName(std::string_view name) {
  return IsTameText(name) && name.front() != '[' && name.find_first_of("]=") == std::string_view::npos;
}

bool IsTame(const Change& change) {
  const bool fits = change.key.size() + change.value.size() + 2 < kLongestLine;
  return change.operation != Operation::kCopySection && IsTameName(change.section) &&
         IsTameName(change.key) && IsTameText(change.value) && fits;
}

/// All that reading finds in a file.
struct View {
  struct Section {
    Names keys;
    std::map<std::string, std::string> values;
    bool operator==(const Section&) const = default;
  };
  Names sections;
  std::map<std::string, Section> byName;
};

Names List(const std::string& path, const char* section) {
  std::vector<char> buffer(65536);
  const std::uint32_t length = GetPrivateProfileString(
      section, nullptr, nullptr, buffer.data(), static_cast<std::uint32_t>(buffer.size()), path.c_str());
  Names names;
  for (std::size_t at = 0; at < length; at += names.back().size() + 1) names.emplace_back(buffer.data() + at);
  return names;
}

std::string Value(const std::string& path, const std::string& section, const std::string& key) {
  char buffer[kLongestLine + 1];
  GetPrivateProfileString(section.c_str(), key.c_str(), "", buffer, sizeof buffer, path.c_str());
  return buffer;
}

View Look(const std::string& path) {
  View view{List(path, nullptr), {}};
  for (const std::string& name : view.sections) {
    View::Section& section = view.byName[name];
    section.keys = List(path, name.c_str());
    for (const std::string& key : section.keys) section.values[key] = Value(path, name, key);
  }
  return view;
}

bool Remove(Names& names, const std::string& name) {
  const auto found = std::ranges::find(names, name);
  if (found == names.end()) return false;
  names.erase(found);
  return true;
}

void AddIfMissing(Names& names, const std::string& name) {
  if (std::ranges::find(names, name) == names.end()) names.push_back(name);
}

/// What a change must make of `before` and answer, compared with what it did.
void CheckTame(const Change& change, View before, View after, bool done) {
  View::Section expected = before.byName[change.section];
  View::Section& found = after.byName[change.section];
  bool expectedDone = true;
  switch (change.operation) {
    case Operation::kSet:
      AddIfMissing(before.sections, change.section);
      AddIfMissing(expected.keys, change.key);
      expected.values[change.key] = change.value;
      EM_FUZZ_CHECK(found == expected);
      break;
    case Operation::kDeleteKey:
      expectedDone = Remove(expected.keys, change.key);
      EM_FUZZ_CHECK(found.keys == expected.keys);
      // A line of the same key further down counts now.
      expected.values.erase(change.key);
      found.values.erase(change.key);
      EM_FUZZ_CHECK(found.values == expected.values);
      break;
    default:
      expectedDone = Remove(before.sections, change.section);
      break;
  }
  EM_FUZZ_CHECK(done == expectedDone);
  EM_FUZZ_CHECK(before.sections == after.sections);
  before.byName.erase(change.section);
  after.byName.erase(change.section);
  EM_FUZZ_CHECK(before.byName == after.byName);
}

/// At most one line gives way to the entry, or one region is gone.
void CheckTouched(const Change& change, const std::string& before, const std::string& after, bool done) {
  if (!done) {
    EM_FUZZ_CHECK(before == after);
    return;
  }
  const std::size_t shorter = std::min(before.size(), after.size());
  const auto start = static_cast<std::size_t>(
      std::mismatch(before.begin(), before.begin() + static_cast<std::ptrdiff_t>(shorter), after.begin())
          .first -
      before.begin());
  std::size_t end = 0;
  while (end < shorter - start && before[before.size() - 1 - end] == after[after.size() - 1 - end]) ++end;
  const std::size_t removed = before.size() - start - end;
  const std::size_t added = after.size() - start - end;
  if (change.operation == Operation::kSet) {
    EM_FUZZ_CHECK(removed <= kLongestLine);
    EM_FUZZ_CHECK(added <= change.section.size() + change.key.size() + change.value.size() + 7);
  } else {
    EM_FUZZ_CHECK(added == 0);
    EM_FUZZ_CHECK(change.operation == Operation::kDeleteSection || removed <= kLongestLine);
  }
}

bool Apply(const Change& change, const std::string& path) {
  const char* const section = change.section.c_str();
  ProfileFile profile;
  EM_FUZZ_CHECK(profile.Open(path.c_str(), 1) == 1);
  switch (change.operation) {
    case Operation::kSet:
      return profile.WriteString(section, change.key.c_str(), change.value.c_str()) == 1;
    case Operation::kDeleteKey:
      return profile.DeleteKey(section, change.key.c_str()) == 1;
    case Operation::kDeleteSection:
      return profile.DeleteSection(section) == 1;
    case Operation::kCopySection:
      return profile.CopySection(section, change.key.c_str()) == 1;
  }
  return false;
}

void ApplyChecked(const Change& change, const MemoryFile& file) {
  const std::string before = file.Read();
  const bool tame = IsTame(change) && IsTameFile(before);
  const View viewBefore = tame ? Look(file.Path()) : View{};
  const bool done = Apply(change, file.Path());
  if (change.operation != Operation::kCopySection) CheckTouched(change, before, file.Read(), done);
  if (tame) CheckTame(change, viewBefore, Look(file.Path()), done);
}

std::string TextUpToZero(ByteSource& source) {
  return std::string(std::string(source.Text()).c_str());
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace emstatus::fuzz;
  static MemoryFile file;
  ByteSource source(data, size);
  std::vector<Change> changes(1 + source.Below(3));
  for (Change& change : changes) {
    change.operation = static_cast<Operation>(source.Below(4));
    change.section = TextUpToZero(source);
    change.key = TextUpToZero(source);
    change.value = TextUpToZero(source);
  }
  file.Write(source.Rest());
  for (const Change& change : changes) ApplyChecked(change, file);
  return 0;
}
