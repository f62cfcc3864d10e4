#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <emstatus/HostCommand.h>

#include "config/CurrentConfiguration.h"
#include "platform/EventHandle.h"
#include "tree/StatusTree.h"

namespace emstatus {

/// Values of "ST" in answers.
namespace answer {
inline constexpr std::uint32_t kSuccess = 0;
inline constexpr std::uint32_t kNotHandled = 1;
inline constexpr std::uint32_t kBadParameter = 2;
inline constexpr std::uint32_t kFailed = 6;
/// Set before an operation is carried out; left when nothing else is set.
inline constexpr std::uint32_t kOpen = 19;
}  // namespace answer

/// Answers the host's status-tree requests from the configuration and from what the last complete scan
/// published. Never waits for the scan. [any thread]
class RequestHandler {
 public:
  /// Sends a component's confirm request to the host; true when it succeeded.
  using ConfirmSender = std::function<bool(const RequestRecord& request)>;

  RequestHandler(const CurrentConfiguration& configuration, StatusTree& tree, EventHandle& wakeUp,
                 ConfirmSender sendConfirm)
      : configuration_(configuration), tree_(tree), wakeUp_(wakeUp), sendConfirm_(std::move(sendConfirm)) {}

  /// Answers the current command by "ST" and "DA". False when its operation is none of the table ("ST" 1).
  bool OnRequest(HostCommand& command) const;

 private:
  /// A request with what it is answered from: one configuration, one scan.
  struct Request {
    HostCommand& command;
    std::uint32_t operation;
    /// "OE", "OI" and "CA".
    std::uint32_t extension;
    std::uint32_t object;
    std::uint32_t cabinet;
    std::shared_ptr<const StatusConfiguration> configuration;
    std::shared_ptr<const StatusSnapshot> scan;
  };

  /// A component at the position that a request gives.
  struct Component {
    const ComponentDefinition* definition;
    /// What the last scan found; of a fresh component before that.
    const ComponentStatus* found;

    /// The display name, the host's where it gives one.
    const std::string& Designation() const {
      return found->displayName.empty() ? definition->displayName : found->displayName;
    }
  };

  using Handler = void (RequestHandler::*)(Request&) const;
  struct Operation {
    std::uint32_t code;
    Handler handle;
  };
  static const Operation kOperations[];
  static const Operation* FindOperation(std::uint32_t code);

  // Subsystems and components by position (RequestHandler.cpp)
  void SubsystemCount(Request& request) const;
  void SubsystemStatus(Request& request) const;
  void SubsystemName(Request& request) const;
  void SubsystemDesignation(Request& request) const;
  void ComponentCount(Request& request) const;
  void ComponentStatusValue(Request& request) const;
  void ComponentName(Request& request) const;
  void ComponentDesignation(Request& request) const;
  void SystemStatus(Request& request) const;
  void ComponentInstanceName(Request& request) const;
  void ComponentSource(Request& request) const;
  void ComponentRawValue(Request& request) const;
  void ComponentStatusText(Request& request) const;

  // Confirmation and mapping (RequestHandlerActions.cpp)
  void ConfirmCheck(Request& request) const;
  void ConfirmCommand(Request& request) const;
  void MapComponentStatus(Request& request) const;
  void MapComponentObjectStatus(Request& request) const;
  const ComponentDefinition* ConfirmedComponent(Request& request) const;

  // Instances (RequestHandlerInstances.cpp)
  void InstanceCount(Request& request) const;
  void InstanceObjectName(Request& request) const;
  void InstanceStatus(Request& request) const;
  void InstanceObjectStatus(Request& request) const;
  void InstanceDesignation(Request& request) const;
  static Component ComponentOfInstances(Request& request);
  static const ComponentInstance* FindInstance(Request& request);

  // Nodes (RequestHandlerNodes.cpp)
  void NodeChildCount(Request& request) const;
  void NodeChild(Request& request) const;
  void NodeParent(Request& request) const;
  void NodeStatus(Request& request) const;
  void NodeCssStatus(Request& request) const;
  void NodeDesignation(Request& request) const;
  void NodeObjectStatus(Request& request) const;
  void NodeAssociationKey(Request& request) const;
  void NodeIsCss(Request& request) const;
  void WholeTree(Request& request) const;
  static const StatusTreeNode* FindNode(Request& request);

  static const SubsystemDefinition* SubsystemOf(const Request& request);
  static Component ComponentAt(const Request& request, std::uint32_t subsystem, std::uint32_t component);
  static Component ComponentOf(const Request& request);

  const CurrentConfiguration& configuration_;
  StatusTree& tree_;
  EventHandle& wakeUp_;
  const ConfirmSender sendConfirm_;
};

}  // namespace emstatus
