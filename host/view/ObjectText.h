#pragma once

#include <cstdint>
#include <string>

#include "host/machine/Machine.h"

/// What is known of an object, in short texts without line ends. [any thread]
namespace emstatus::host {

/// Its reading ("41 °C"); empty when it has none that can be trusted.
std::string ReadingOf(const ObjectView& object);

/// Quality when it is not good, reason, redundancy and advice: "0 RPM, at least 600 RPM expected; 3 of 4
/// work, 3 needed; replace the fan". Empty when there is nothing to say.
std::string RemarkOn(const ObjectView& object);

/// What the value of the error LED says: "Warning", "Error, the customer can mend it".
std::string LedText(std::uint32_t value, const std::string& statusWord);

}  // namespace emstatus::host
