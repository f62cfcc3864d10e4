#include "host/configuration/IniFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace emstatus::host {
namespace {

constexpr std::string_view kIniSpace = " \t\n\v\f\r";
constexpr std::size_t kLongestNumber = 31;

std::string_view WithoutSpace(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(kIniSpace), text.size());
  return text.substr(first, text.find_last_not_of(kIniSpace) + 1 - first);
}

bool IsSpace(char letter) {
  return kIniSpace.find(letter) != std::string_view::npos;
}

/// As the module looks for it: whatever stands between "[" and "]" may hold further brackets.
bool IsHeaderOf(std::string_view header, std::string_view name) {
  header.remove_prefix(1);
  return header.size() > name.size() && header.starts_with(name) && header[name.size()] == ']';
}

}  // namespace

IniFile::IniFile(std::string_view text) {
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t length = std::min(text.find('\n'), text.size() - 1) + 1;
    std::string_view line = text.substr(0, length);
    if (length > kLongestLine) {
      longLines_.push_back({number, length});
    }
    if (line.find('\0') != std::string_view::npos) {
      zeroByteLines_.push_back(number);
    }
    while (!line.empty()) {
      TakePiece(line.substr(0, kLongestLine), number);
      line.remove_prefix(std::min(kLongestLine, line.size()));
    }
    text.remove_prefix(length);
  }
}

void IniFile::TakePiece(std::string_view piece, std::size_t line) {
  // The module reads C strings.
  piece = piece.substr(0, piece.find('\0'));
  const std::size_t semicolon = std::min(piece.find(';'), piece.size());
  const std::string_view content = WithoutSpace(piece.substr(0, semicolon));
  if (content.starts_with('[')) {
    IniSection& section = sections_.emplace_back();
    section.header = WithoutSpace(piece);
    section.line = line;
    if (const std::size_t end = content.find(']'); end != std::string_view::npos) {
      section.name = content.substr(1, end - 1);
      firstOf_.try_emplace(section.name, sections_.size() - 1);
    }
    return;
  }
  IniSection& section = sections_.back();
  const std::size_t equals = content.find('=');
  if (equals != std::string_view::npos) {
    section.entries.push_back({std::string(WithoutSpace(content.substr(0, equals))),
                               std::string(WithoutSpace(content.substr(equals + 1))), line,
                               std::string(WithoutSpace(piece.substr(semicolon))),
                               semicolon < piece.size() && !IsSpace(piece[semicolon - 1])});
    section.firstOf.try_emplace(section.entries.back().key, section.entries.size() - 1);
  } else if (!content.empty()) {
    section.strays.push_back({std::string(content), line});
  }
}

const IniSection* IniFile::FindSection(std::string_view name) const {
  if (name.find(';') != std::string_view::npos) {
    return nullptr;
  }
  if (name.find(']') == std::string_view::npos) {
    const auto found = firstOf_.find(name);
    return found == firstOf_.end() ? nullptr : &sections_[found->second];
  }
  const auto found = std::find_if(sections_.begin() + 1, sections_.end(), [&](const IniSection& section) {
    return IsHeaderOf(section.header, name);
  });
  return found == sections_.end() ? nullptr : &*found;
}

const IniEntry* IniFile::Find(std::string_view section, std::string_view key) const {
  const IniSection* found = FindSection(section);
  if (found == nullptr) {
    return nullptr;
  }
  const auto entry = found->firstOf.find(key);
  return entry == found->firstOf.end() ? nullptr : &found->entries[entry->second];
}

std::optional<std::string> IniFile::Value(std::string_view section, std::string_view key) const {
  const IniEntry* entry = Find(section, key);
  return entry == nullptr || entry->value.empty() ? std::nullopt : std::optional(entry->value);
}

std::int32_t IniFile::Number(std::string_view section, std::string_view key, std::int32_t otherwise) const {
  const auto value = Value(section, key);
  return value ? static_cast<std::int32_t>(std::strtoul(value->substr(0, kLongestNumber).c_str(), nullptr, 0))
               : otherwise;
}

std::vector<std::string> IniFile::Keys(std::string_view section) const {
  std::vector<std::string> keys;
  const IniSection* found = FindSection(section);
  if (found == nullptr) {
    return keys;
  }
  std::size_t length = 0;
  bool ended = false;
  for (const IniEntry& entry : found->entries) {
    length += entry.key.size() + 1;
    ended = ended || entry.key.empty();
    if (!ended) {
      keys.push_back(entry.key);
    }
  }
  return length <= kLongestKeyList ? keys : std::vector<std::string>{};
}

std::string ReadFileText(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw std::runtime_error(path + " is a folder, not a file.");
  }
  std::ifstream stream(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
  if (!stream.is_open() || stream.bad()) {
    throw std::runtime_error("cannot read " + path + ": " + std::generic_category().message(errno) + ".");
  }
  return text;
}

IniFile ReadIniFile(const std::string& path) {
  return IniFile(ReadFileText(path));
}

}  // namespace emstatus::host
