#pragma once

#include <cstdarg>
#include <cstddef>

namespace emstatus {

/// The room for one message in the system log, its closing zero included.
inline constexpr std::size_t kSystemLogMessageSize = 1024;

/// Writes a message as the system log shall show it into `buffer`, always closed with a zero, and returns its
/// length. Messages are laid out for a trace, where they begin with line feeds: those are left out, unless
/// `format` has nothing else. Longer messages are cut to the buffer. When formatting fails the text is
/// "ERROR: cann't format message"; a null format gives an empty text. [any thread]
std::size_t FormatSystemLogMessage(char (&buffer)[kSystemLogMessageSize], const char* format,
                                   std::va_list arguments) __attribute__((format(printf, 2, 0)));

/// The last part of the name the program was started with: how this process signs in the system log. The text
/// stays where it is for the life of the process, as openlog() needs it. [any thread]
const char* ProgramShortName() noexcept;

}  // namespace emstatus
