#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include "platform/CDebugTraceConfig.h"
#include "platform/Mutex.h"
#include "platform/SystemLog.h"
#include "platform/TraceIniSection.h"

namespace emstatus {

class TraceSink;

/// What a trace client takes from its surroundings; a test brings its own.
struct TraceSurroundings {
  const char* directory = "/opt/TalvernPX/vital/etc/TalvernSuite/TraceConfig";
  std::time_t (*now)(std::time_t*) = std::time;
  const SystemLogCalls* systemLog = &kSystemLogCalls;
};

/// Decides by a level whether a diagnostic line is written and hands it to the host's trace sink.
///
/// The level comes from trace configuration files and the environment (QX_LOG_DEBUG_LEVEL) and, when an
/// update interval is configured (there or in QX_LOG_DYNAMIC_UPDATE), follows the files while the module
/// runs. No failure is reported: without configuration the level is 0. Lines of level 0 go to the system log
/// too. One object, `debugClient`, serves the whole library; lines are written with EM_TRACE.
class CDebugClient : public CDebugTraceConfig {
 public:
  /// Init(moduleName) on these surroundings. `directory` is kept by pointer.
  explicit CDebugClient(const char* moduleName, const TraceSurroundings& surroundings = {});
  /// Closes the system log if it was used. From here on nothing passes any more.
  ~CDebugClient() override;
  CDebugClient(const CDebugClient&) = delete;
  CDebugClient& operator=(const CDebugClient&) = delete;

  /// False: a client, not the sink. [any thread]
  bool IsSink() override { return false; }

  /// Takes the module's name (none: nullptr) and reads the configuration, also again when the environment or
  /// the files have changed. A configuration directory that holds no file leaves the level as it is and the
  /// environment unread. [no other thread traces meanwhile]
  virtual void Init(const char* moduleName);

  /// Writes a line when `level` is not above the configured one; `format` is printf's. Level 0 always passes
  /// and, unless `format` is null, also goes to the system log. First follows the configuration files when it
  /// is time to. [any thread; several at once]
  virtual void Trace(std::uint32_t level, const char* format, ...) __attribute__((format(printf, 3, 4)));

  /// Hands a line to the sink whatever its level; nothing more. [any thread; several at once]
  virtual void Print(const char* format, ...) __attribute__((format(printf, 2, 3)));
  /// The same; `level` is not looked at. [any thread; several at once]
  virtual void Print(std::uint32_t level, const char* format, ...) __attribute__((format(printf, 3, 4)));

  /// Trace() with an argument list, which is not used up. [any thread; several at once]
  void VTrace(std::uint32_t level, const char* format, va_list arguments)
      __attribute__((format(printf, 3, 0)));

  /// Whether Trace(level, ...) has anything to do: one relaxed load and one compare. Also true for lines
  /// below the level while files are followed, since every call must then look at the clock. [any thread]
  bool Passes(std::uint32_t level) const noexcept { return level < gate_.load(std::memory_order_relaxed); }

  /// Passes() for the module's own lines, which are not even looked at while tracing is off. [any thread]
  bool PassesEnabled(std::uint32_t level) const noexcept {
    return level < enabledGate_.load(std::memory_order_relaxed);
  }

  /// Whether the level was not 0 when the configuration was read by Init(). [any thread]
  bool Enabled() const noexcept { return enabled_.load(std::memory_order_relaxed); }
  /// The highest level that is written. [any thread]
  std::uint32_t Level() const noexcept { return level_.load(std::memory_order_relaxed); }
  /// Words of the configuration that are kept for the sink and mean nothing here. [any thread]
  std::uint32_t TraceFlags() const noexcept { return traceFlags_.load(std::memory_order_relaxed); }
  std::uint32_t MemoryTracesFlag() const noexcept {
    return memoryTracesFlag_.load(std::memory_order_relaxed);
  }

 private:
  void ReadConfiguration() EM_REQUIRES(filesLock_);
  std::uint32_t ReadModuleSection(const std::vector<std::string>& files) EM_REQUIRES(filesLock_);
  void FollowFiles();
  void FollowGlobalFile() EM_REQUIRES(filesLock_);
  void FollowModuleFile() EM_REQUIRES(filesLock_);
  void SetGates();
  TraceSink* Sink();
  void VPrint(const char* format, va_list arguments) __attribute__((format(printf, 2, 0)));

  // Any thread
  std::atomic<std::uint32_t> gate_{0};
  std::atomic<std::uint32_t> enabledGate_{0};
  std::atomic<bool> enabled_{false};
  std::atomic<std::uint32_t> level_{0};
  std::atomic<std::uint32_t> traceFlags_{0};
  std::atomic<std::uint32_t> memoryTracesFlag_{0};
  std::atomic<std::uint32_t> updateInterval_{0};
  std::atomic<std::time_t> lastCheck_{0};
  std::atomic<TraceSink*> sink_{nullptr};
  SystemLog systemLog_;
  // Constant, the name after Init()
  const TraceSurroundings surroundings_;
  std::string moduleName_;
  // Own lock, held by the one thread that reads the files
  Mutex filesLock_;
  TraceIniSection globalSection_ EM_GUARDED_BY(filesLock_);
  TraceIniSection moduleSection_ EM_GUARDED_BY(filesLock_);
};

/// The library's trace client, named "EM_STATUS": built when the library is loaded, before all other objects
/// of it, and destroyed after them. Before and after, nothing passes. Hidden, so that testing a level needs
/// no look-up of its address.
extern __attribute__((visibility("hidden"))) CDebugClient debugClient;

/// Writes a line of the module: nothing is evaluated while tracing is off or the level does not pass.
#define EM_TRACE(level, ...)                                                                             \
  do {                                                                                                   \
    if (::emstatus::debugClient.PassesEnabled(level)) ::emstatus::debugClient.Trace(level, __VA_ARGS__); \
  } while (false)

/// The same for lines that depend on the level alone (exports, events, threads, registry, file look-up).
#define EM_TRACE_ALWAYS(level, ...)                                                               \
  do {                                                                                            \
    if (::emstatus::debugClient.Passes(level)) ::emstatus::debugClient.Trace(level, __VA_ARGS__); \
  } while (false)

}  // namespace emstatus
