#include "process/ProcessStatus.h"

#include <charconv>

namespace emstatus {

namespace {

/// What follows "key:" and one tab at the start of a line.
std::optional<std::string_view> Field(std::string_view text, std::string_view key) {
  while (!text.empty()) {
    const std::string_view line = text.substr(0, text.find('\n'));
    if (line.starts_with(key) && line.substr(key.size()).starts_with(":\t"))
      return line.substr(key.size() + 2);
    text.remove_prefix(line.size() < text.size() ? line.size() + 1 : line.size());
  }
  return std::nullopt;
}

/// Takes a number off `text`, with the blanks in front of it.
template <typename Number>
bool Take(std::string_view& text, Number& number) {
  while (text.starts_with(' ') || text.starts_with('\t')) text.remove_prefix(1);
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

template <typename Number>
bool ReadNumber(std::string_view text, std::string_view key, Number& number) {
  std::optional<std::string_view> field = Field(text, key);
  return field && Take(*field, number);
}

bool ReadUsers(std::string_view text, ProcessStatus& status) {
  std::optional<std::string_view> field = Field(text, "Uid");
  return field && Take(*field, status.realUser) && Take(*field, status.effectiveUser);
}

/// The kernel writes a line feed in a name as "\n" and a backslash as "\\".
std::string Unescaped(std::string_view text) {
  std::string name;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escaped =
        text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'n' || text[i + 1] == '\\');
    if (!escaped) {
      name.push_back(text[i]);
    } else {
      name.push_back(text[++i] == 'n' ? '\n' : '\\');
    }
  }
  return name;
}

}  // namespace

std::optional<ProcessStatus> ParseProcessStatus(std::string_view text) {
  ProcessStatus status;
  const std::optional<std::string_view> name = Field(text, "Name");
  const std::optional<std::string_view> state = Field(text, "State");
  if (!name || !state || state->empty()) return std::nullopt;
  if (!ReadNumber(text, "Pid", status.pid) || !ReadNumber(text, "PPid", status.parent)) return std::nullopt;
  if (!ReadUsers(text, status)) return std::nullopt;
  status.name = Unescaped(*name);
  status.state = state->front();
  if (std::uint64_t resident; ReadNumber(text, "VmRSS", resident)) status.residentKib = resident;
  return status;
}

}  // namespace emstatus
