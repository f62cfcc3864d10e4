#pragma once

#include <chrono>
#include <span>
#include <string>
#include <string_view>

#include "host/providers/ObjectClass.h"

/// How often the readings of a class of objects are made, over all sources that tell such objects. [any
/// thread]
namespace emstatus::host {

struct SourceRhythm {
  /// The name of a provider, or of what it reads more seldom than the rest.
  std::string_view name;
  std::chrono::seconds interval;
  std::chrono::seconds lateAfter;
};

std::span<const SourceRhythm> SourceRhythms();

/// The slowest of the sources of a class, with the names of all of them.
struct ClassRhythm {
  std::string sources;
  std::chrono::seconds interval{0};
  std::chrono::seconds lateAfter{0};
};
ClassRhythm RhythmOfClass(ObjectClass objectClass);

}  // namespace emstatus::host
