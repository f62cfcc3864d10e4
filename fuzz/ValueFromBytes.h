#pragma once

#include "data/OwnedCommand.h"
#include "fuzz/ByteSource.h"

/// Command values as a host of any quality could build them: every kind and tag, kinds above 6, containers
/// and texts without storage, names that are no strings, deep nesting. All storage comes from malloc. What is
/// made is bounded by the bytes that are used up, but for one nesting of up to 2,047 levels a value.
namespace emstatus::fuzz {

/// Any value.
OwnedValue ValueFromBytes(ByteSource& source);

/// A document, mostly with "SIP", "CMD" and some commands, and mostly with a current command.
OwnedCommand CommandFromBytes(ByteSource& source);

/// What a host makes of a request before it returns it: "ST", "DA", or another document altogether.
void AnswerFromBytes(ByteSource& source, HostCommand& command);

}  // namespace emstatus::fuzz
