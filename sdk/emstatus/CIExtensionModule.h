#pragma once

#include <cstdint>

#include <emstatus/HostCommand.h>

namespace emstatus {

class HostInterface;
struct ModuleInfo;

/// Codes of CIExtensionModule::OnNotification.
enum HostNotification : std::uint32_t {
  HWN_SWITCH_SHUTDOWN = 0x20000,
  HWN_SWITCH_REQUEST_ENABLED = 0x20001,
  HWN_SYSTEM_SHUTDOWN = 0x30000,
  HWN_POWERSTATE_SUSPEND = 0x40000,
  HWN_POWERSTATE_STANDBY = 0x40001,
  HWN_POWERSTATE_RESUME = 0x40002,
  HWN_POWERSTATE_AC_OFFLINE = 0x40003,
  HWN_POWERSTATE_AC_ONLINE = 0x40004,
};

/// What a host calls on an extension module. The order of the operations is the binary contract (slots of
/// the Itanium C++ ABI): nothing is inserted, removed or moved without a new major version.
class CIExtensionModule {
 public:
  /// Slots 1 and 2. The host does not delete a module; EM_Delete does.
  virtual ~CIExtensionModule() = default;

  /// Slot 3. Fills `info`; false, and nothing written, when `info->size` is below sizeof(ModuleInfo).
  /// [host thread; any state]
  virtual bool GetModuleInfo(ModuleInfo* info) = 0;

  /// Slot 4. Reserved for the host. [host thread]
  virtual bool HostHook1() = 0;

  /// Slot 5. Connects the module to its host and reads its configuration. `host` stays valid until the
  /// module is deleted; `hostValue` is kept unchanged. False when the configuration cannot be used.
  /// [host thread; after EM_Create]
  virtual bool Start(HostInterface* host, std::uint32_t hostValue) = 0;

  /// Slot 6. Ends the module's threads; always true. [host thread; after Start]
  virtual bool Stop() = 0;

  /// Slot 7. Starts the module's own threads. [host thread; after Start, before Stop]
  virtual void StartThreads() = 0;

  /// Slot 8. A reply or an event that passed the host's command interface; the command is only read.
  /// [any host thread; after Start, before EM_Delete]
  virtual void OnReply(HostCommand& command) = 0;

  /// Slot 9. A request; the answer is written into the command ("ST", "DA"). False when the operation is
  /// not one of the module's ("ST" is 1 then). [any host thread; after Start, before EM_Delete]
  virtual bool OnRequest(HostCommand& command) = 0;

  /// Slot 10. Reserved for the host. [host thread]
  virtual std::uint32_t HostHook2() = 0;

  /// Slot 11. The number of the server's own cabinet. [host thread; before Start]
  virtual bool SetCabNr(std::uint32_t cabinet) = 0;

  /// Slot 12. Reserved for the host. [host thread]
  virtual std::uint32_t HostHook3() = 0;

  /// Slot 13. The storage extension cabinets; only the low 8 bits of `count` are used. `cabinets` is read
  /// during the call only. [host thread; before Start]
  virtual bool SetServerSeList(const std::uint32_t* cabinets, std::uint32_t count) = 0;

  /// Slot 14. Something happened to the host or the machine (HostNotification). [any host thread]
  virtual std::uint32_t OnNotification(std::uint32_t code, std::uint32_t parameter, void* data) = 0;

  /// Slot 15. The module's name; the text lives as long as the library is loaded. [any thread]
  virtual const char* GetModuleName() = 0;

  /// Slots 16 to 23. Reserved for the host. [host thread]
  virtual void HostHook4() = 0;
  virtual void HostHook5() = 0;
  virtual void HostHook6() = 0;
  virtual void HostHook7() = 0;
  virtual std::uint32_t HostHook8() = 0;
  virtual std::uint32_t HostHook9() = 0;
  virtual std::uint32_t HostHook10() = 0;
  virtual std::uint32_t HostHook11() = 0;

  /// Slot 24. A notification, after the module's frame has acted on it. [any host thread]
  virtual std::uint32_t OnModuleNotification(std::uint32_t code, std::uint32_t parameter, void* data) = 0;
};

}  // namespace emstatus
