#pragma once

namespace emstatus {

/// What a trace client and a host's trace sink have in common, so that either can be asked which it is.
class CDebugTraceConfig {
 public:
  virtual ~CDebugTraceConfig() = default;
  /// True for the process-wide sink that a host exports, false for a client of it. [any thread]
  virtual bool IsSink() = 0;
};

}  // namespace emstatus
