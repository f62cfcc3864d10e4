#include "host/providers/MdLayout.h"

#include <algorithm>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

/// The copies that a raid10 keeps of everything, beside each other and far from each other.
struct Copies {
  std::uint32_t near = 1;
  std::uint32_t far = 1;
};

Copies CopiesIn(std::string_view layout) {
  constexpr std::uint64_t kTwoNear = 0x102;
  const auto bits = static_cast<std::uint32_t>(ParseUnsigned(layout).value_or(kTwoNear) & 0xFFFF);
  return {std::max(bits & 0xFFU, 1U), std::max(bits >> 8U, 1U)};
}

}  // namespace

std::optional<std::uint32_t> ParseRaidDisks(std::string_view text) {
  std::optional<std::uint32_t> least;
  for (std::string_view word : Words(text)) {
    if (word.starts_with('(') && word.ends_with(')')) {
      word = word.substr(1, word.size() - 2);
    }
    const auto number = NumberAfter(word, "");
    if (!number) {
      return std::nullopt;
    }
    least = std::min(least.value_or(*number), *number);
  }
  return least;
}

std::uint32_t ToleratedLosses(std::string_view level, std::uint32_t disks, std::string_view layout) {
  if (disks == 0) {
    return 0;
  }
  if (level == "raid1" || level == "multipath") {
    return disks - 1;
  }
  if (level == "raid4" || level == "raid5") {
    return 1;
  }
  if (level == "raid6") {
    return 2;
  }
  if (level == "raid10") {
    const Copies copies = CopiesIn(layout);
    return std::min(copies.near * copies.far, disks) - 1;
  }
  return 0;
}

bool IsDataLost(std::string_view level, std::string_view layout, const std::vector<bool>& inSync) {
  const std::size_t disks = inSync.size();
  const auto missing = static_cast<std::size_t>(std::ranges::count(inSync, false));
  if (level != "raid10") {
    return missing > ToleratedLosses(level, static_cast<std::uint32_t>(disks), layout);
  }
  const Copies copies = CopiesIn(layout);
  const std::size_t together = std::size_t{copies.near} * copies.far;
  // The copies of a block lie on neighbours; with near copies alone, often on the same neighbours always.
  const std::size_t step = copies.far == 1 && disks % together == 0 ? together : 1;
  for (std::size_t first = 0; first < disks; first += step) {
    bool isAnyLeft = false;
    for (std::size_t at = first; at < first + together; ++at) {
      isAnyLeft = isAnyLeft || inSync[at % disks];
    }
    if (!isAnyLeft) {
      return true;
    }
  }
  return false;
}

std::optional<double> ParseProgress(std::string_view text) {
  const std::vector<std::string_view> words = Words(text, '/');
  const auto done = words.size() == 2 ? ParseUnsigned(words[0]) : std::nullopt;
  const auto all = words.size() == 2 ? ParseUnsigned(words[1]) : std::nullopt;
  if (!done || !all || *all == 0 || *done > *all) {
    return std::nullopt;
  }
  return 100 * static_cast<double>(*done) / static_cast<double>(*all);
}

}  // namespace emstatus::host
