#include "host/providers/ErrorHistory.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "host/providers/KernelText.h"

namespace emstatus::host {
namespace {

constexpr std::int64_t kHour = 3600;
// The driver tells its age in whole seconds.
constexpr std::int64_t kSameStart = 300;
constexpr char kNone[] = "-";
constexpr std::size_t kMostHours = 64;

void Append(std::string& text, const std::map<std::int64_t, std::uint64_t>& hours) {
  text += ' ';
  for (const auto& [hour, count] : hours) {
    text += std::to_string(hour) + ":" + std::to_string(count) + ",";
  }
  text += hours.empty() ? kNone : "";
}

std::optional<std::map<std::int64_t, std::uint64_t>> ParseHours(std::string_view text) {
  std::map<std::int64_t, std::uint64_t> hours;
  if (text == kNone) {
    return hours;
  }
  for (const std::string_view entry : Words(text, ',')) {
    const std::vector<std::string_view> words = Words(entry, ':');
    const auto hour = words.size() == 2 ? ParseInteger(words[0]) : std::nullopt;
    const auto count = words.size() == 2 ? ParseUnsigned(words[1]) : std::nullopt;
    if (!hour || !count) {
      return std::nullopt;
    }
    hours[*hour] = *count;
  }
  return hours;
}

}  // namespace

void ErrorHistory::Update(const Counters& counters, std::int64_t now) {
  const bool anew = !last_ || HasBegunAnew(counters);
  const Counters before = anew ? Counters{} : *last_;
  const std::int64_t hour = now / kHour;
  if (lastHour_ > hour) {
    // The clock was set back while nobody looked.
    corrected_ = Moved(corrected_, 0, hour);
    uncorrected_ = Moved(uncorrected_, 0, hour);
    lastHour_ = hour;
  }
  const auto age = static_cast<double>(std::max(now - CountedFrom(counters, anew, now), std::int64_t{1}));
  const double share = std::min(1.0, static_cast<double>(kWindow) / age);
  const std::uint64_t corrected = counters.corrected - before.corrected;
  const std::uint64_t uncorrected = counters.uncorrected - before.uncorrected;
  if (corrected > 0) {
    corrected_[hour] += static_cast<std::uint64_t>(std::llround(static_cast<double>(corrected) * share));
  }
  if (uncorrected > 0) {
    uncorrected_[hour] += uncorrected;
  }
  lastRise_ = last_ ? corrected + uncorrected : 0;
  const auto began = anew ? counters.began : last_->began;
  last_ = counters;
  // The driver tells its age in whole seconds: kept as it was first, or the text would differ at every call.
  last_->began = began;
  lastHour_ = hour;
  std::erase_if(corrected_, [&](const auto& entry) { return (entry.first + 1) * kHour <= now - kWindow; });
  while (uncorrected_.size() > kMostHours) {
    uncorrected_.erase(uncorrected_.begin());
  }
}

void ErrorHistory::MoveClock(std::int64_t seconds) {
  const std::int64_t hours = seconds / kHour;
  corrected_ = Moved(corrected_, hours, INT64_MAX);
  uncorrected_ = Moved(uncorrected_, hours, INT64_MAX);
  lastHour_ += hours;
}

ErrorHistory::Hours ErrorHistory::Moved(const Hours& hours, std::int64_t by, std::int64_t latest) {
  Hours moved;
  for (const auto& [hour, count] : hours) {
    moved[std::min(hour + by, latest)] += count;
  }
  return moved;
}

std::int64_t ErrorHistory::CountedFrom(const Counters& counters, bool anew, std::int64_t now) const {
  const std::int64_t seen = last_ ? lastHour_ * kHour : now - kWindow;
  if (!anew || !counters.age) {
    return seen;
  }
  const std::int64_t began = now - *counters.age;
  return last_ ? std::max(seen, began) : began;
}

bool ErrorHistory::HasBegunAnew(const Counters& counters) const {
  if (counters.corrected < last_->corrected || counters.uncorrected < last_->uncorrected) {
    return true;
  }
  if (counters.boot != last_->boot) {
    return !counters.boot.empty() && !last_->boot.empty();
  }
  return counters.began && last_->began && *counters.began - *last_->began > kSameStart;
}

std::uint64_t ErrorHistory::CorrectedPerDay(std::int64_t now) const {
  return Sum(corrected_, now);
}

std::uint64_t ErrorHistory::Uncorrected() const {
  return Sum(uncorrected_, kWindow);
}

std::uint64_t ErrorHistory::NewUncorrected(std::int64_t now) const {
  return Sum(uncorrected_, now);
}

std::uint64_t ErrorHistory::Sum(const Hours& hours, std::int64_t now) {
  std::uint64_t sum = 0;
  for (const auto& [hour, count] : hours) {
    // An hour counts until its end is a day old.
    sum += (hour + 1) * kHour > now - kWindow ? count : 0;
  }
  return sum;
}

void ErrorHistory::Confirm() {
  corrected_.clear();
  uncorrected_.clear();
}

std::string ErrorHistory::Text() const {
  const Counters last = last_.value_or(Counters{});
  std::string text = std::to_string(last.corrected) + " " + std::to_string(last.uncorrected) + " " +
                     (last.boot.empty() ? kNone : last.boot) + " " +
                     (last.began ? std::to_string(*last.began) : kNone) + " " + std::to_string(lastHour_);
  Append(text, corrected_);
  Append(text, uncorrected_);
  return text;
}

std::optional<ErrorHistory> ErrorHistory::FromText(std::string_view text) {
  const std::vector<std::string_view> words = Words(text);
  if (words.size() != 7) {
    return std::nullopt;
  }
  const auto corrected = ParseUnsigned(words[0]);
  const auto uncorrected = ParseUnsigned(words[1]);
  const auto began = ParseInteger(words[3]);
  const auto lastHour = ParseInteger(words[4]);
  const auto correctedHours = ParseHours(words[5]);
  const auto uncorrectedHours = ParseHours(words[6]);
  if (!corrected || !uncorrected || (!began && words[3] != kNone) || !lastHour || !correctedHours ||
      !uncorrectedHours) {
    return std::nullopt;
  }
  ErrorHistory history;
  history.last_ =
      Counters{*corrected, *uncorrected, {}, began, std::string(words[2] == kNone ? "" : words[2])};
  history.lastHour_ = *lastHour;
  history.corrected_ = *correctedHours;
  history.uncorrected_ = *uncorrectedHours;
  return history;
}

}  // namespace emstatus::host
