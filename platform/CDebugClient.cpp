#include "platform/CDebugClient.h"

#include <cxxabi.h>
#include <dirent.h>
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <emstatus/TraceSink.h>

namespace emstatus {
namespace {

constexpr std::uint32_t kNotConfigured = 0xFFFFFFFF;
constexpr std::uint32_t kEverythingPasses = 0xFFFFFFFF;
constexpr char kGlobalFile[] = "global_trace.ini";
constexpr char kGlobalSection[] = "GlobalDebugSettings";

/// Calls the host's sink. What it throws ends here: no trace failure reaches a caller. A thread that is
/// cancelled inside is let go on.
template <typename Call>
void Guarded(const Call& call) {
  try {
    call();
  } catch (abi::__forced_unwind&) {
    throw;
  } catch (...) {
  }
}

/// Collects the names of the trace files in order; false when there is no such directory.
bool ListTraceFiles(const char* directory, std::vector<std::string>& files) {
  DIR* const listing = opendir(directory);
  if (listing == nullptr) return false;
  while (const dirent* const entry = readdir(listing)) {
    const char* const name = entry->d_name;
    if (std::strstr(name, ".ini") != nullptr && std::strncmp(name, ".#", 2) != 0) files.emplace_back(name);
  }
  closedir(listing);
  std::sort(files.begin(), files.end());
  return true;
}

/// The number in an environment variable, else `configured` unless that says "not configured", else 0.
std::uint32_t FromEnvironment(const char* variable, std::uint32_t configured) {
  if (const char* const text = std::getenv(variable)) {
    return static_cast<std::uint32_t>(std::strtoul(text, nullptr, 10));
  }
  return configured < kNotConfigured ? configured : 0;
}

/// Whether what stands at `symbol` can be an object with virtual operations: large enough, and starting with
/// a pointer into a loaded library or program.
bool HasOperations(const void* symbol) {
  Dl_info info;
  void* entry = nullptr;
  if (dladdr1(symbol, &info, &entry, RTLD_DL_SYMENT) == 0) return false;
  const void* operations = nullptr;
  if (const auto* const known = static_cast<const ElfW(Sym)*>(entry)) {
    const bool function = ELF64_ST_TYPE(known->st_info) == STT_FUNC;
    const bool small = known->st_size != 0 && known->st_size < sizeof operations;
    if (function || small) return false;
  }
  std::memcpy(&operations, symbol, sizeof operations);
  return operations != nullptr && dladdr(operations, &info) != 0;
}

/// The sink that `scope` holds under "Debug"; null when there is none.
TraceSink* FindSink(void* scope) {
  void* const symbol = dlsym(scope, "Debug");
  // "Debug" is a likely name for a host's switch or function, which must not be called as if it were a sink.
  if (symbol == nullptr || !HasOperations(symbol)) return nullptr;
  auto* const candidate = static_cast<TraceSink*>(symbol);
  return candidate->IsSink() ? candidate : nullptr;
}

}  // namespace

// Before every other static object of the library, so that all of them can trace on their way in and out.
__attribute__((init_priority(101))) CDebugClient debugClient("EM_STATUS");

CDebugClient::CDebugClient(const char* moduleName, const TraceSurroundings& surroundings)
    : systemLog_(*surroundings.systemLog), surroundings_(surroundings) {
  CDebugClient::Init(moduleName);
}

CDebugClient::~CDebugClient() {
  gate_.store(0, std::memory_order_relaxed);
  enabledGate_.store(0, std::memory_order_relaxed);
}

void CDebugClient::Init(const char* moduleName) {
  const MutexGuard guard(filesLock_);
  try {
    moduleName_ = moduleName != nullptr ? moduleName : "";
    ReadConfiguration();
  } catch (const std::exception&) {
    // Out of memory while the library is loaded: the level stays 0, like with any other trouble here.
  }
  enabled_ = level_ != 0;
  SetGates();
}

void CDebugClient::ReadConfiguration() {
  std::vector<std::string> files;
  if (ListTraceFiles(surroundings_.directory, files) && files.empty()) return;
  globalSection_.Drop();
  moduleSection_.Drop();
  std::uint32_t interval = kNotConfigured;
  if (globalSection_.Read(kGlobalSection, kGlobalFile, surroundings_.directory)) {
    globalSection_.Find("DynamicUpdate", interval);
  }
  updateInterval_ = FromEnvironment("QX_LOG_DYNAMIC_UPDATE", interval);
  const std::uint32_t fileLevel = ReadModuleSection(files);
  level_ = FromEnvironment("QX_LOG_DEBUG_LEVEL", fileLevel);
}

std::uint32_t CDebugClient::ReadModuleSection(const std::vector<std::string>& files) {
  // The first file that holds the section; a section that was not read holds no key.
  for (const std::string& file : files) {
    if (moduleSection_.Read(moduleName_.c_str(), file.c_str(), surroundings_.directory)) break;
  }
  std::uint32_t fileLevel = kNotConfigured;
  moduleSection_.Find("FileDebugLevel", fileLevel);
  std::uint32_t flags = 0;
  if (moduleSection_.Find("TraceFlags", flags)) traceFlags_ = flags;
  return fileLevel;
}

void CDebugClient::SetGates() {
  const std::uint32_t level = level_;
  const bool follows = updateInterval_ != 0;
  const std::uint32_t gate = follows || level == kEverythingPasses ? kEverythingPasses : level + 1;
  gate_ = gate;
  enabledGate_ = enabled_ ? gate : 0;
}

void CDebugClient::FollowFiles() {
  const std::uint32_t interval = updateInterval_.load(std::memory_order_relaxed);
  if (interval == 0) return;
  const std::time_t now = surroundings_.now(nullptr);
  const std::time_t last = lastCheck_.load(std::memory_order_relaxed);
  if (now >= last && now - last < static_cast<std::time_t>(interval)) return;
  // One thread reads; the others go on with what they have.
  if (!filesLock_.TryLock()) return;
  const MutexGuard guard(filesLock_, kAdoptLock);
  lastCheck_.store(now, std::memory_order_relaxed);
  FollowGlobalFile();
  FollowModuleFile();
  SetGates();
}

void CDebugClient::FollowGlobalFile() {
  switch (globalSection_.Look()) {
    case TraceIniSection::Change::kNone:
      break;
    case TraceIniSection::Change::kVanished:
      globalSection_.Drop();
      break;
    case TraceIniSection::Change::kNewer:
      std::uint32_t interval = 0;
      if (globalSection_.Read(kGlobalSection) && globalSection_.Find("DynamicUpdate", interval)) {
        updateInterval_ = interval;
      }
      break;
  }
}

void CDebugClient::FollowModuleFile() {
  switch (moduleSection_.Look()) {
    case TraceIniSection::Change::kNone:
      break;
    case TraceIniSection::Change::kVanished:
      moduleSection_.Drop();
      break;
    case TraceIniSection::Change::kNewer:
      if (!moduleSection_.Read(moduleName_.c_str())) break;
      std::uint32_t value = 0;
      if (moduleSection_.Find("FileDebugLevel", value)) level_ = value;
      if (moduleSection_.Find("TraceFlags", value)) traceFlags_ = value;
      if (moduleSection_.Find("MemoryTracesFlag", value)) memoryTracesFlag_ = value;
      break;
  }
}

TraceSink* CDebugClient::Sink() {
  TraceSink* sink = sink_.load(std::memory_order_acquire);
  if (sink != nullptr) return sink;
  sink = FindSink(RTLD_DEFAULT);
  if (sink == nullptr) sink = FindSink(RTLD_NEXT);
  if (sink != nullptr) sink_.store(sink, std::memory_order_release);
  return sink;
}

void CDebugClient::Trace(std::uint32_t level, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  VTrace(level, format, arguments);
  va_end(arguments);
}

void CDebugClient::VTrace(std::uint32_t level, const char* format, va_list arguments) {
  FollowFiles();
  if (level > level_.load(std::memory_order_relaxed)) return;
  if (TraceSink* const sink = Sink()) {
    va_list copy;
    va_copy(copy, arguments);
    Guarded([&] { sink->FilteredPrint(format, copy, moduleName_.c_str()); });
    va_end(copy);
  }
  if (level == 0 && format != nullptr) {
    va_list copy;
    va_copy(copy, arguments);
    systemLog_.Write(format, copy);
    va_end(copy);
  }
}

void CDebugClient::Print(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  VPrint(format, arguments);
  va_end(arguments);
}

void CDebugClient::Print(std::uint32_t /*level*/, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  VPrint(format, arguments);
  va_end(arguments);
}

void CDebugClient::VPrint(const char* format, va_list arguments) {
  if (TraceSink* const sink = Sink()) {
    Guarded([&] { sink->Print(format, arguments, moduleName_.c_str()); });
  }
}

}  // namespace emstatus
