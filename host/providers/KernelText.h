#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Small readers of the texts in which the kernel answers. Text in, value out; no file is touched. [any
/// thread]
namespace emstatus::host {

/// `text` without the white space at both its ends.
std::string_view Trimmed(std::string_view text);

/// A whole decimal number with an optional sign, white space around it allowed; absent for anything else,
/// also for one beyond 64 bits.
std::optional<std::int64_t> ParseInteger(std::string_view text);

/// A whole number without a sign, in hexadecimal after "0x", else decimal.
std::optional<std::uint64_t> ParseUnsigned(std::string_view text);

/// A decimal number with an optional fraction ("12.34"), in the "C" form whatever the locale.
std::optional<double> ParseDecimal(std::string_view text);

/// The lines of a text, without their ends; a text that ends in a line end has no empty line after it.
std::vector<std::string_view> Lines(std::string_view text);

/// The words of a line, parted by blanks, tabs and (optionally) by one more character.
std::vector<std::string_view> Words(std::string_view line, char alsoParts = ' ');

/// The numbers of a list of ranges ("0-3,8"), in order; absent when it is malformed or names more than
/// `limit`.
std::optional<std::vector<std::uint32_t>> ParseRangeList(std::string_view text, std::size_t limit = 65536);

/// A field of /proc/self/mountinfo with its octal escapes ("\040") replaced.
std::string WithoutOctalEscapes(std::string_view field);

/// The last part of a path.
std::string_view BaseName(std::string_view path);

/// The number at the end of "<prefix><number>"; absent when `name` is not of that form.
std::optional<std::uint32_t> NumberAfter(std::string_view name, std::string_view prefix);

}  // namespace emstatus::host
