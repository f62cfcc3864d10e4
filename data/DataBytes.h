#pragma once

#include <emstatus/CommandValue.h>

#include <cstdint>
#include <vector>

namespace emstatus {

/// The "DA" member of the command at `index` of a command document as bytes; `bytes` is emptied first.
/// An object gives the low bytes of its "RAW" numbers (none when it has none); an array of texts gives
/// each text with a zero byte and one zero byte more; a string itself with a zero byte; an unsigned number
/// 1, 2, 4 or 8 little-endian bytes, the fewest that hold it. False when there is no such command or data,
/// or the data is a negative number, a floating-point number or of any other kind. [any thread]
bool GetDataBytes(const CommandValue& document, std::uint32_t index, std::vector<std::uint8_t>& bytes);

/// The bytes of a value {"RAW":[n, n, ...]}; none for anything else. [any thread]
std::vector<std::uint8_t> RawBytes(const CommandValue& value);

}  // namespace emstatus
