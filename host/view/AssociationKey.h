#pragma once

#include <optional>
#include <string_view>

#include "host/machine/Request.h"

namespace emstatus::host {

/// The object that a node of the status tree stands for, from the node's key "TRIQ:OC-OI-OE-CA" (hexadecimal;
/// parts at the end may be missing, a missing cabinet means `ownCabinet`). Nothing for other keys, and for
/// keys whose request was not about one object of a class. [any thread]
std::optional<ObjectAddress> ObjectOfKey(std::string_view key, std::uint32_t ownCabinet);

/// What such a key's request asks.
std::optional<Question> QuestionOfKey(std::string_view key);

}  // namespace emstatus::host
