#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace emstatus::host {

/// The number of members that an array needs, of a text like "4" or, while it is reshaped, "11 (10)": then
/// the smaller one, since those are what holds the data until the end. Absent for a container. [any thread]
std::optional<std::uint32_t> ParseRaidDisks(std::string_view text);

/// How many members an array of this level can always lose. `layout` tells the copies of a raid10. [any
/// thread]
std::uint32_t ToleratedLosses(std::string_view level, std::uint32_t disks, std::string_view layout);

/// Whether data is lost without the slots that are not `inSync`: a raid10 lives as long as one copy of
/// everything does, which may be more than it can always lose. [any thread]
bool IsDataLost(std::string_view level, std::string_view layout, const std::vector<bool>& inSync);

/// How far a check or rebuild has come, in percent, of a text like "1024 / 4096". [any thread]
std::optional<double> ParseProgress(std::string_view text);

}  // namespace emstatus::host
