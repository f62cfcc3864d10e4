#include "host/view/StatusWords.h"

#include <charconv>
#include <fstream>
#include <iterator>

#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

constexpr std::string_view kSection = "[StatusMapping]";
constexpr std::string_view kSpace = " \t\r";
constexpr std::uint32_t kLargestStatusWord = 255;

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kSpace);
  return first == std::string_view::npos ? std::string_view{}
                                         : text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

std::string Plain(std::uint32_t status) {
  switch (status) {
    case 0:
      return "NoStatus";
    case 1:
      return "OK";
    case 2:
      return "Warning";
    case 3:
      return "Error";
    default:
      return "Status " + std::to_string(status);
  }
}

}  // namespace

StatusWords::StatusWords(std::string_view configurationText) {
  bool inside = false;
  while (!configurationText.empty()) {
    const std::size_t end = configurationText.find('\n');
    const std::string_view physical = configurationText.substr(0, end);
    configurationText =
        end == std::string_view::npos ? std::string_view{} : configurationText.substr(end + 1);
    const std::string_view line = Trimmed(physical.substr(0, physical.find(';')));
    if (line.starts_with('[')) {
      if (inside) {
        return;
      }
      inside = line.starts_with(kSection);
      continue;
    }
    const std::size_t equals = line.find('=');
    if (!inside || equals == std::string_view::npos) {
      continue;
    }
    const std::string_view value = Trimmed(line.substr(equals + 1));
    std::uint32_t status = 0;
    const auto [after, error] = std::from_chars(value.data(), value.data() + value.size(), status);
    if (error == std::errc() && status <= kLargestStatusWord) {
      names_[status] = CleanUtf8(Trimmed(line.substr(0, equals)));
    }
  }
}

StatusWords StatusWords::FromFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return StatusWords(std::string{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()});
}

std::string StatusWords::Of(std::uint32_t status) const {
  const auto found = names_.find(status);
  return found == names_.end() ? Plain(status) : found->second;
}

int ExitCodeOf(std::uint32_t systemStatus) {
  return systemStatus >= 1 && systemStatus <= 3 ? int(systemStatus) - 1 : 3;
}

}  // namespace emstatus::host
