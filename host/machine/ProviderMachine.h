#pragma once

#include <memory>
#include <vector>

#include "host/machine/NumberedMachine.h"
#include "host/machine/ObjectTable.h"
#include "host/machine/Worker.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// A machine that is read by providers, each on its own worker. Requests are answered from the last readings
/// and so never wait for a device; only a confirmation does.
class ProviderMachine final : public NumberedMachine {
 public:
  explicit ProviderMachine(std::vector<std::unique_ptr<Provider>> providers);
  ~ProviderMachine() override;

  std::vector<std::uint32_t> ExtensionCabinets() const override { return {}; }
  void Start(std::function<void()> changed) override;
  bool WaitUntilRead(std::chrono::milliseconds limit) override;
  void Refresh() override;
  void OnScanBegin() override {}
  void Stop() override;

 protected:
  std::uint32_t Count(ObjectClass objectClass, std::uint32_t cabinet) const override;
  std::optional<ObjectView> FindByIndex(const ObjectAddress& address) const override;
  std::optional<ObjectView> FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                       const std::string& name) const override;
  Answer Confirm(ObjectClass objectClass, std::uint32_t cabinet, std::chrono::milliseconds timeout) override;

 private:
  /// A provider and what its worker needs, kept alive by the worker when it is stuck.
  struct Feed;

  std::shared_ptr<ObjectTable> table_ = std::make_shared<ObjectTable>();
  std::vector<std::shared_ptr<Feed>> feeds_;
  std::vector<std::unique_ptr<Worker>> workers_;
};

}  // namespace emstatus::host
