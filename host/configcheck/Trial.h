#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "host/configuration/Configuration.h"
#include "host/machine/Numbering.h"
#include "host/providers/Reading.h"

namespace emstatus::host {

/// How to make one component fail, in a machine made for it.
struct Trial {
  ObjectClass objectClass = ObjectClass::HealthSource;
  /// Of the part among those of its class, from 0.
  std::size_t position = 0;
  /// For a part that is asked by its name.
  std::string name;
  /// The part when all is well; its id and name are left to the machine.
  Reading good;
  Reading bad;
  /// The component's status is another when the part is late.
  bool showsSilence = false;
};

/// A trial for a component that the module asks, or in `why` what keeps it from being tried. [any thread]
std::optional<Trial> MakeTrial(const Definition& definition, std::string& why);

}  // namespace emstatus::host
