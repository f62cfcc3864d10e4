#include "config/MapEntry.h"

#include <algorithm>
#include <cstdlib>

#include "platform/CDebugClient.h"

namespace emstatus {
namespace {

constexpr std::string_view kSeparators = " \t;";

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::int32_t Decimal(const std::string& text) {
  return static_cast<std::int32_t>(std::strtol(text.c_str(), nullptr, 10));
}

void TraceDuplicate(const std::string& key) {
  EM_TRACE(1, "\nEM_STATUS (ReadCfg) : ## ERROR! Duplicate component's mapping definition \"%s\"!",
           key.c_str());
}

}  // namespace

MapEntryWords SplitMapEntry(std::string_view value) {
  const std::size_t targetEnd = std::min(value.find_first_of(kSeparators), value.size());
  const std::size_t rawBegin = std::min(value.find_first_not_of(kSeparators, targetEnd), value.size());
  const std::size_t rawEnd = std::min(value.find_first_of(kSeparators, rawBegin), value.size());
  return {std::string(value.substr(0, targetEnd)), std::string(value.substr(rawBegin, rawEnd - rawBegin))};
}

std::optional<std::int32_t> RawNumber(const std::string& word) {
  const std::size_t digit = word.starts_with('-') ? 1 : 0;
  if (digit >= word.size() || !IsDigit(word[digit])) return std::nullopt;
  return Decimal(word);
}

void AddStatusMapEntry(const StatusConfiguration& configuration, const std::string& key,
                       std::string_view value, ComponentDefinition& component) {
  const MapEntryWords words = SplitMapEntry(value);
  const auto named = configuration.statusValues.find(words.target);
  if (named == configuration.statusValues.end()) {
    EM_TRACE(
        1,
        "\nEM_STATUS (ReadCfg) : ## ERROR! Unknown status name used (%s) in component's mapping definition \"%s\"!",
        words.target.c_str(), key.c_str());
    return;
  }
  const StatusValue status = named->second;
  if (const auto raw = RawNumber(words.raw)) {
    if (!component.statusMap.try_emplace(*raw, MappedStatus{status, words.raw}).second) {
      TraceDuplicate(key);
      return;
    }
    EM_TRACE(3, "\nEM_STATUS           :     -> mapping status value %d (\"%s\") to %s(%d)...", *raw,
             words.raw.c_str(), words.target.c_str(), status);
  } else if (words.raw.starts_with('*')) {
    component.undefinedStatus = status;
    EM_TRACE(3, "\nEM_STATUS           :     -> mapping undefined status values (\"%s\") to %s(%d)...",
             words.raw.c_str(), words.target.c_str(), status);
  } else {
    EM_TRACE(1, "\nEM_STATUS (ReadCfg) : ## ERROR! Illegal value in component's mapping definition \"%s\"!",
             key.c_str());
  }
}

void AddRedundancyMapEntry(const std::string& key, std::string_view value, ComponentDefinition& component) {
  const MapEntryWords words = SplitMapEntry(value);
  const auto raw = RawNumber(words.raw);
  if (!raw) {
    EM_TRACE(1,
             "\nEM_STATUS (ReadCfg) : ## ERROR! Illegal value in component's redundancy definition \"%s\"!",
             key.c_str());
    return;
  }
  const std::int32_t target = Decimal(words.target);
  if (!component.redundancyMap.try_emplace(*raw, target).second) {
    TraceDuplicate(key);
    return;
  }
  EM_TRACE(3, "\nEM_STATUS           :     mapping redundancy value %d (\"%s\") to %s (%d)...", *raw,
           words.raw.c_str(), words.target.c_str(), target);
}

}  // namespace emstatus
