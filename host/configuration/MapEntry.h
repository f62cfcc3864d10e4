#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace emstatus::host {

/// A line "Status.ANY=WORD RAW" or "Redundancy.ANY=TARGET RAW" of a component.
struct MapEntry {
  std::string key;
  std::size_t line = 0;
  /// Its first two words. Words end at a space, a tab or a semicolon.
  std::string target;
  std::string raw;
  /// What stands behind them; the module does not look at it.
  std::string rest;
  /// The raw value that the second word begins with.
  std::optional<std::int32_t> number;

  /// It stands for every raw value that no other entry holds.
  bool IsForOthers() const { return !number && raw.starts_with('*'); }
};

/// Splits the value of a map entry. [any thread]
MapEntry ReadMapEntry(std::string key, std::size_t line, std::string_view value);

/// The number that a text begins with, 0 for any other, cut to 32 bits. [any thread]
std::int32_t DecimalNumber(const std::string& text);

}  // namespace emstatus::host
