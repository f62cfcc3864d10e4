#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/machine/Fault.h"
#include "host/machine/NumberedMachine.h"

namespace emstatus::host {

/// The objects of a machine, taken once and all good since, of which one at a time can be made to fail: so a
/// fault shows alone, and the same way each time.
class FrozenMachine final : public NumberedMachine {
 public:
  /// An object, and a question about it.
  using Asked = std::pair<ObjectAddress, Question>;

  /// Copies every object that `source` has now. `source` may be stopped afterwards.
  explicit FrozenMachine(const Machine& source);

  /// From now on this object, and no other, has the fault. Nothing fails when there is no such object.
  /// [any thread]
  void Force(const ObjectAddress& object, Fault fault);
  /// From now on all is good. [any thread]
  void Restore();

  /// All objects, by class, cabinet and number. [any thread]
  std::vector<ObjectView> Objects() const;

  /// What has been asked about objects that there are, whatever the answer was. [any thread]
  std::set<Asked> WasAsked() const;
  void ForgetAsked();

  std::vector<std::uint32_t> ExtensionCabinets() const override { return cabinets_; }
  /// `changed` is called by Force and Restore.
  void Start(std::function<void()> changed) override;
  bool WaitUntilRead(std::chrono::milliseconds) override { return true; }
  Answer Ask(const Request& request, std::chrono::milliseconds timeout) override;
  void Refresh() override {}
  void OnScanBegin() override {}
  void Stop() override {}

 protected:
  std::uint32_t Count(ObjectClass objectClass, std::uint32_t cabinet) const override;
  std::optional<ObjectView> FindByIndex(const ObjectAddress& address) const override;
  std::optional<ObjectView> FindByName(ObjectClass objectClass, std::uint32_t cabinet,
                                       const std::string& name) const override;
  /// Nothing is latched here.
  Answer Confirm(ObjectClass objectClass, std::uint32_t cabinet, std::chrono::milliseconds timeout) override;

 private:
  using Forced = std::optional<std::pair<ObjectAddress, Fault>>;

  void SetForced(Forced forced);
  Forced NowForced() const;
  ObjectView View(const ObjectAddress& address, const Reading& good) const;
  /// The fault of the object's redundancy group, when the object that fails is in it.
  std::optional<Fault> FaultInGroup(const Redundancy& group, const Forced& forced) const;

  // Constant after construction and Start
  std::vector<std::uint32_t> cabinets_;
  std::map<ObjectAddress, Reading> objects_;
  std::function<void()> changed_ = [] {};
  mutable std::mutex lock_;
  // Guarded by lock_
  Forced forced_;
  std::set<Asked> asked_;
};

}  // namespace emstatus::host
