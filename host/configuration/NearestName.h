#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Guessing what a misspelt name was to be. [any thread]
namespace emstatus::host {

/// How many letters must be changed, added or left out, four for each; a letter in the other case is one.
std::size_t NameDistance(std::string_view left, std::string_view right);

/// The candidate that `name` is likely to mean; empty when none comes near.
std::string NearestName(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace emstatus::host
