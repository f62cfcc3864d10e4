#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace emstatus::host {

/// The memory errors of one module over the last 24 hours, made from counters that begin anew whenever their
/// driver is loaded. Times are seconds since 1970. Can be kept as one line of text. [one thread]
class ErrorHistory {
 public:
  static constexpr std::int64_t kWindow = 24 * 3600;

  struct Counters {
    std::uint64_t corrected = 0;
    std::uint64_t uncorrected = 0;
    /// Seconds for which they have counted; absent where the driver does not tell.
    std::optional<std::int64_t> age = {};
    /// When they began, in seconds on the machine's own clock, which nobody sets.
    std::optional<std::int64_t> began = {};
    /// Names the start of the machine, in one word; empty when it is not known.
    std::string boot = {};
  };

  /// Takes in what the counters show at `now`. What they showed before the first call happened while they
  /// counted; when that is longer than 24 hours, only the day's share of the corrected ones is counted.
  void Update(const Counters& counters, std::int64_t now);

  /// The clock on the wall was set by so many seconds: moves all that was seen with it.
  void MoveClock(std::int64_t seconds);

  /// Errors of both kinds that came between the last two calls of Update; 0 before the second.
  std::uint64_t LastRise() const { return lastRise_; }

  /// Corrected errors within the 24 hours before `now`.
  std::uint64_t CorrectedPerDay(std::int64_t now) const;

  /// Uncorrected errors that nobody has confirmed: all, and those within the 24 hours before `now`.
  std::uint64_t Uncorrected() const;
  std::uint64_t NewUncorrected(std::int64_t now) const;

  /// Forgets what has happened, not where the counters stand.
  void Confirm();

  std::string Text() const;
  /// Absent when the text is not one of Text().
  static std::optional<ErrorHistory> FromText(std::string_view text);

 private:
  // Errors by the hour (since 1970) in which they were seen
  using Hours = std::map<std::int64_t, std::uint64_t>;

  static Hours Moved(const Hours& hours, std::int64_t by, std::int64_t latest);
  static std::uint64_t Sum(const Hours& hours, std::int64_t now);
  bool HasBegunAnew(const Counters& counters) const;
  std::int64_t CountedFrom(const Counters& counters, bool anew, std::int64_t now) const;

  std::optional<Counters> last_;
  /// The hour (since 1970) of the last call.
  std::int64_t lastHour_ = 0;
  std::uint64_t lastRise_ = 0;
  Hours corrected_;
  Hours uncorrected_;
};

}  // namespace emstatus::host
