#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "config/ComponentDefinition.h"
#include "config/StatusConfiguration.h"

namespace emstatus {

/// The two words of a map entry's value; words end at a space, a tab or a semicolon, and what follows the
/// second is ignored.
struct MapEntryWords {
  std::string target;
  std::string raw;
};
MapEntryWords SplitMapEntry(std::string_view value);

/// The number that `word` begins with (digits, or "-" and digits; decimal, cut to 32 bits), or nothing.
std::optional<std::int32_t> RawNumber(const std::string& word);

/// Enters the status map entry `key` = `value` into `component`. What is wrong with it is traced, and the
/// entry passed over.
void AddStatusMapEntry(const StatusConfiguration& configuration, const std::string& key,
                       std::string_view value, ComponentDefinition& component);

/// The same for a redundancy map entry.
void AddRedundancyMapEntry(const std::string& key, std::string_view value, ComponentDefinition& component);

}  // namespace emstatus
