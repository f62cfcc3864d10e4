#include "config/ComponentDefinition.h"

namespace emstatus {

MappedStatus ComponentDefinition::Map(std::int32_t rawValue) const {
  const auto entry = statusMap.find(rawValue);
  if (entry != statusMap.end()) return entry->second;
  return {undefinedStatus.value_or(NoStatus), "undefined"};
}

}  // namespace emstatus
