#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/CRegistryNode.h"

/// The text form of a registry tree, one item a line. A key's values come first:
///
///     name=s=text     string                 name=d=-1        number
///     name=es=text    expandable string      name=b=0a ff     binary, every byte followed by a blank
///
/// then its child keys, each a line `[name]` and the same again, and an empty line ends the key. A line has
/// at most 1023 characters with its line feed; what goes beyond is the next line.
namespace emstatus {

/// Keys that lie deeper are left out, with a line in the trace (level 1).
inline constexpr std::size_t kDeepestRegistryKey = 64;

/// Adds what `text` holds to the tree and returns how many values and keys were read. The text ends with the
/// empty line of the top node, whatever follows. Of two values of one name the last counts; two keys of one
/// name are one. Lines that are nothing of the above are skipped; a carriage return is a character like
/// others. [any thread]
std::size_t ReadRegistryText(std::string_view text, CRegistryNode& top);

/// The text of the whole tree. Values without data are left out, and so is, with a line in the trace (level
/// 1), what would not be read again as it is. [any thread]
std::string WriteRegistryText(const CRegistryNode& top);

/// Whether a value or a key would be read again as it is.
bool IsRegistryValue(std::string_view name, const RegistryValue& value);
bool IsRegistryKeyName(std::string_view name);

}  // namespace emstatus
