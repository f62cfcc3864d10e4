#pragma once

#include <cstdarg>

namespace emstatus {

/// Where a module's trace goes: the object (not a pointer to it) that a host exports under the symbol
/// "Debug". Operations are bound by slot of the Itanium C++ ABI and may be called on any thread.
class TraceSink {
 public:
  /// Slots 1 and 2. Never called by a module.
  virtual ~TraceSink() = default;

  /// Slot 3. Answers true; a module takes nothing else for a sink.
  virtual bool IsSink() = 0;

  /// Slots 4 to 7. Never called by a module.
  virtual void Reserved4() {}
  virtual void Reserved5() {}
  virtual void Reserved6() {}
  virtual void Reserved7() {}

  /// Slot 8. Writes a message whatever its level. `format` is printf's.
  virtual void Print(const char* format, va_list arguments, const char* moduleName) = 0;

  /// Slot 9. Writes a message that has passed the module's level.
  virtual void FilteredPrint(const char* format, va_list arguments, const char* moduleName) = 0;
};

}  // namespace emstatus
