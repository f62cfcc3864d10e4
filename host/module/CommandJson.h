#pragma once

#include <nlohmann/json.hpp>

#include <emstatus/CommandValue.h>

/// Command values and what they say as JSON. Values of the module are only copied; values made here lie in
/// malloc memory, as the contract wants it. [any thread]
namespace emstatus::host {

/// A copy of the value. Kinds that the contract does not know, and anything nested deeper than 64 levels,
/// become null.
nlohmann::json ToJson(const CommandValue& value);

/// A value of its own; give it to ReleaseValue(), or hand it over in a command.
CommandValue MakeValue(const nlohmann::json& json);

/// Frees all that the value owns and makes it null.
void ReleaseValue(CommandValue& value);

/// The first member of that name; null when there is none, or `object` is no object.
const CommandValue* FindMember(const CommandValue& object, std::string_view name);

/// Replaces the member or appends it, taking `value` over. `name` is a literal: the command keeps the
/// pointer. `object` must be an object.
void SetMember(CommandValue& object, const char* name, CommandValue value);

}  // namespace emstatus::host
