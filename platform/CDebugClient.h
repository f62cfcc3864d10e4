#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "platform/CDebugTraceConfig.h"
#include "platform/TraceIniSection.h"

namespace emstatus {

class TraceSink;

/// Decides by a level whether a diagnostic line is written and hands it to the host's trace sink.
///
/// The level comes from trace configuration files and the environment and follows the files while the
/// module runs. One object, `debugClient`, serves the whole library; lines are written with EM_TRACE.
class CDebugClient : public CDebugTraceConfig {
 public:
  // to be completed
  bool Enabled() const noexcept { return enabled_.load(std::memory_order_relaxed); }

  /// Whether Trace(level, ...) has anything to do: one relaxed load and one compare. [any thread]
  bool Passes(std::uint32_t level) const noexcept { return level < gate_.load(std::memory_order_relaxed); }

  /// Passes() for the module's own lines, which are not even looked at while tracing is off. [any thread]
  bool PassesEnabled(std::uint32_t level) const noexcept {
    return level < enabledGate_.load(std::memory_order_relaxed);
  }

  virtual void Trace(std::uint32_t level, const char* format, ...) __attribute__((format(printf, 3, 4)));

 private:
  std::atomic<std::uint32_t> gate_;
  std::atomic<std::uint32_t> enabledGate_;
  std::atomic<bool> enabled_;
};

extern CDebugClient debugClient;

/// Writes a line of the module: nothing is evaluated while tracing is off or the level does not pass.
#define EM_TRACE(level, ...)                                                                       \
  do {                                                                                             \
    if (::emstatus::debugClient.PassesEnabled(level)) ::emstatus::debugClient.Trace(level, __VA_ARGS__); \
  } while (false)

/// The same for lines that depend on the level alone (exports, events, threads, registry, file look-up).
#define EM_TRACE_ALWAYS(level, ...)                                                         \
  do {                                                                                      \
    if (::emstatus::debugClient.Passes(level)) ::emstatus::debugClient.Trace(level, __VA_ARGS__); \
  } while (false)

}  // namespace emstatus
