#pragma once

#include <cstdint>

#include <emstatus/HostCommand.h>

namespace emstatus {

class CIExtensionModule;

/// What a module calls on its host, by slot of the Itanium C++ ABI. Every operation may be called on any
/// thread of the module, also on several at once.
class HostInterface {
 public:
  /// Slots 1 and 2. Never called by a module.
  virtual ~HostInterface() = default;

  /// Slots 3 to 8. Never called by a module.
  virtual void Reserved3() {}
  virtual void Reserved4() {}
  virtual void Reserved5() {}
  virtual void Reserved6() {}
  virtual void Reserved7() {}
  virtual void Reserved8() {}

  /// Slot 9. Sends a command without waiting for an answer; `zero` is 0.
  virtual void SendCommand(CIExtensionModule* module, HostCommand& command, std::uint32_t zero) = 0;

  /// Slot 10. Sends a request and waits for its answer, at most `timeoutMs` milliseconds: when this
  /// returns, "ST" and "DA" of the current command hold the answer. A module reads "ST", not the result.
  virtual bool SendRequest(CIExtensionModule* module, HostCommand& command, std::uint32_t timeoutMs) = 0;

  /// Slot 11. Sends an event to whoever listens. The command stays the module's.
  virtual void SendEvent(CIExtensionModule* module, HostCommand& command) = 0;

  /// Slot 12. The module is ready (`state` false).
  virtual bool SetModuleState(CIExtensionModule* module, bool state) = 0;

  /// Slot 13. The module has begun to stop.
  virtual bool ModuleStopping(CIExtensionModule* module) = 0;

  /// Slots 14 to 26. Never called by a module.
  virtual void Reserved14() {}
  virtual void Reserved15() {}
  virtual void Reserved16() {}
  virtual void Reserved17() {}
  virtual void Reserved18() {}
  virtual void Reserved19() {}
  virtual void Reserved20() {}
  virtual void Reserved21() {}
  virtual void Reserved22() {}
  virtual void Reserved23() {}
  virtual void Reserved24() {}
  virtual void Reserved25() {}
  virtual void Reserved26() {}

  /// Slot 27. Sends a request to the module whose id is the two 16-bit halves of "MI".
  virtual bool SendToModule(CIExtensionModule* module, HostCommand& command, std::uint32_t miHigh,
                            std::uint32_t miLow) = 0;

  /// Slot 28. What kind of host this is: 5 agentless service, 8 remote, 10 both.
  virtual std::uint32_t HostKind(CIExtensionModule* module) = 0;
};

}  // namespace emstatus
