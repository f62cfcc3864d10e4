// Trace configuration files: sections and numbers as a plain reader finds them, and the file followed as it
// changes. The input is the file; a zero byte ends it for the reader as well.

#include <array>
#include <cctype>
#include <cstdlib>
#include <optional>

#include "fuzz/Check.h"
#include "fuzz/MemoryFile.h"
#include "platform/TraceIniSection.h"

namespace emstatus::fuzz {
namespace {

bool IsCalled(std::string_view name, std::string_view wanted) {
  if (name.size() != wanted.size()) return false;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    if (lower(name[i]) != lower(wanted[i])) return false;
  }
  return true;
}

/// The text of a section of a complete file.
std::optional<std::string_view> SectionOf(std::string_view text, std::string_view wanted) {
  const std::size_t close = text.rfind(']');
  if (close == std::string_view::npos || close == 0) return std::nullopt;
  const std::size_t open = text.rfind('[', close - 1);
  if (open == std::string_view::npos) return std::nullopt;
  if (!IsCalled(text.substr(open + 1, close - open - 1), "EndOfFile")) return std::nullopt;
  text = text.substr(0, open);
  text = text.substr(0, text.find('\0'));
  for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', at)) {
    const std::size_t end = text.find(']', at);
    if (end == std::string_view::npos) return std::nullopt;
    const bool found = IsCalled(text.substr(at + 1, end - at - 1), wanted);
    at = end + 1;
    if (found) return text.substr(at, text.find('[', at) - at);
  }
  return std::nullopt;
}

std::optional<std::uint32_t> NumberIn(std::string_view section, std::string_view key) {
  const std::size_t found = section.find(key);
  if (found == std::string_view::npos) return std::nullopt;
  std::size_t at = section.find('=', found + key.size());
  if (at == std::string_view::npos) return std::nullopt;
  ++at;
  while (at < section.size() && std::isspace(static_cast<unsigned char>(section[at])) != 0) ++at;
  const std::string_view number = section.substr(at, 63);
  return static_cast<std::uint32_t>(
      std::strtoul(std::string(number.substr(0, number.find('\n'))).c_str(), nullptr, 0));
}

void CheckNumbers(const TraceIniSection& section, std::optional<std::string_view> expected) {
  for (const char* key : {"FileDebugLevel", "TraceFlags", "DynamicUpdate", "a", ""}) {
    std::uint32_t number = 77;
    const bool found = section.Find(key, number);
    const auto wanted = expected ? NumberIn(*expected, key) : std::nullopt;
    EM_FUZZ_CHECK(found == wanted.has_value());
    EM_FUZZ_CHECK(number == wanted.value_or(77));
  }
}

void CheckSection(MemoryFile& file, std::string_view text, const char* name) {
  file.Write(text);
  const auto expected = SectionOf(text, name);
  TraceIniSection section;
  EM_FUZZ_CHECK(section.Read(name, file.Name().c_str(), "/proc/self/fd") == expected.has_value());
  EM_FUZZ_CHECK(section.Known() == expected.has_value());
  CheckNumbers(section, expected);
  EM_FUZZ_CHECK(section.Look() == TraceIniSection::Change::kNone);
  if (!expected) return;
  // As long as before, but no longer complete.
  file.Write(std::string(text.size(), '['));
  EM_FUZZ_CHECK(!section.Read(name));
  CheckNumbers(section, std::nullopt);
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static emstatus::fuzz::MemoryFile file;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  for (const char* name : {"EM_STATUS", "GlobalDebugSettings", ""}) {
    emstatus::fuzz::CheckSection(file, text, name);
  }
  return 0;
}
