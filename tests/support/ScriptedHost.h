#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <emstatus/HostInterface.h>

namespace emstatus::test {

/// A host that answers by a script and writes what the module does into the trace capture, in order.
///
/// A script has one rule a line, "OC-OE-OI-CA @FIRST-LAST: ANSWER": hexadecimal numbers or "*" (also for what
/// is left out), the scans in which it holds (default: all), and "number N", "text REST", "raw N N ...",
/// "true", "null" or "status N" (without data). The first rule that fits answers; nothing fits: status 1.
/// "#" begins a comment. A scan begins with request 1030. [any thread]
class ScriptedHost final : public HostInterface {
 public:
  explicit ScriptedHost(std::string_view script);

  /// Called, on the module's thread, before a request is answered; gives the operation code and the scan.
  std::function<void(std::uint32_t operation, int scan)> onRequest;
  /// What HostKind answers.
  std::uint32_t kind = 0;

  void SendCommand(CIExtensionModule* module, HostCommand& command, std::uint32_t zero) override;
  bool SendRequest(CIExtensionModule* module, HostCommand& command, std::uint32_t timeoutMs) override;
  void SendEvent(CIExtensionModule* module, HostCommand& command) override;
  bool SetModuleState(CIExtensionModule* module, bool state) override;
  bool ModuleStopping(CIExtensionModule* module) override;
  bool SendToModule(CIExtensionModule* module, HostCommand& command, std::uint32_t miHigh,
                    std::uint32_t miLow) override;
  std::uint32_t HostKind(CIExtensionModule* module) override;

 private:
  struct Rule {
    /// "OC", "OE", "OI" and "CA"; nothing fits all.
    std::optional<std::uint32_t> wanted[4];
    int firstScan = 0;
    int lastScan = 0;
    std::string answer;
  };
  static Rule ParseRule(const std::string& line);
  void Answer(HostCommand& command);
  static void Log(const std::string& what);

  std::vector<Rule> rules_;
  std::mutex lock_;
  int scan_ = 0;
};

}  // namespace emstatus::test
