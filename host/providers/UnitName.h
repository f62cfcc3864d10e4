#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace emstatus::host {

/// The name with ".service" behind it, unless it ends in another type of unit. [any thread]
std::string WithUnitType(const std::string& name);

/// Whether systemd could have a unit of this name, which has its type. [any thread]
bool IsUnitName(std::string_view name);

/// The template that a unit is an instance of ("getty@.service" of "getty@tty1.service"), or that it is
/// itself; absent for any other unit. [any thread]
std::optional<std::string> TemplateOf(std::string_view name);

}  // namespace emstatus::host
