#include "host/configuration/NearestName.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace emstatus::host {
namespace {

constexpr std::size_t kWholeLetter = 4;
/// Longer names and lists are no slips of a pen, and would take their time.
constexpr std::size_t kLongestGuessed = 80;
constexpr std::size_t kMostCandidates = 2000;

char FoldedLetter(char letter) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
}

}  // namespace

std::size_t NameDistance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> row(right.size() + 1);
  for (std::size_t j = 0; j <= right.size(); ++j) {
    row[j] = j * kWholeLetter;
  }
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], (i + 1) * kWholeLetter);
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t same = FoldedLetter(left[i]) == FoldedLetter(right[j]) ? 1 : kWholeLetter;
      const std::size_t change = diagonal + (left[i] == right[j] ? 0 : same);
      diagonal = row[j + 1];
      row[j + 1] = std::min({change, row[j] + kWholeLetter, diagonal + kWholeLetter});
    }
  }
  return row.back();
}

std::string NearestName(std::string_view name, const std::vector<std::string>& candidates) {
  std::string nearest;
  if (name.size() > kLongestGuessed || candidates.size() > kMostCandidates) {
    return nearest;
  }
  // One letter in three may be wrong, and the case of each.
  std::size_t best = (name.size() + 2) / 3 * kWholeLetter + name.size() / 2 + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t longer = std::max(candidate.size(), name.size());
    const std::size_t shorter = std::min(candidate.size(), name.size());
    if ((longer - shorter) * kWholeLetter >= best) {
      continue;
    }
    if (const std::size_t distance = NameDistance(name, candidate); distance < best) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace emstatus::host
