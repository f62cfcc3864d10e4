#include "status/Aggregation.h"

#include "platform/CDebugClient.h"
#include "status/MergeStatus.h"

namespace emstatus {
namespace {

constexpr std::uint8_t kCustomerServiceable = 0x80;

}  // namespace

void MakeParentStatus(StatusValue& parentSlot, StatusValue nodeValue) {
  EM_TRACE(5, "\nEM_STATUS           :     MakeParentStatus: parentStatus=%d, nodeStatus=%d ", parentSlot,
           nodeValue);
  if (MergeStatus(parentSlot, nodeValue)) {
    EM_TRACE(5, "\nEM_STATUS           :       ==> done        parentStatus=%d, nodeStatus=%d ", parentSlot,
             nodeValue);
  }
}

void UpdateParentStatus(StatusTreeNode& parentNode, const StatusTreeNode& childNode) {
  EM_TRACE(5, "\nEM_STATUS           :     UpdateParentStatus for parent \"%s\" ", parentNode.id.c_str());
  EM_TRACE(5, "\nEM_STATUS           :     --> current: status=%d, cssStatus=%d, nonCssStatus=%d ",
           childNode.status, childNode.cssStatus, childNode.nonCssStatus);
  MakeParentStatus(parentNode.status, childNode.status);
  MakeParentStatus(parentNode.cssStatus, childNode.cssStatus);
  MakeParentStatus(parentNode.nonCssStatus, childNode.nonCssStatus);
}

void MakeGelCssStatus(StatusTreeNode& node, std::int32_t cssIndicator) {
  node.isCSS = cssIndicator > 0;
  if (node.status == NoStatus) {
    node.cssStatus = node.nonCssStatus = NoStatus;
  } else {
    const bool faulty = node.status == Warning || node.status == Error;
    const StatusValue own = faulty ? node.status : OK;
    node.cssStatus = node.isCSS ? own : OK;
    node.nonCssStatus = node.isCSS ? OK : own;
  }
  EM_TRACE(
      5, "\nEM_STATUS           :     MakeGelCssStatus for \"%s\": status=%d, cssStatus=%d, nonCssStatus=%d ",
      node.id.c_str(), node.status, node.cssStatus, node.nonCssStatus);
}

std::uint8_t GelValue(const StatusTreeNode& root) {
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : System status: %d", root.status);
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   non-CSS system status: %d", root.nonCssStatus);
  EM_TRACE(3, "\nEM_STATUS (QUERY)   :   CSS system status:     %d", root.cssStatus);
  if (root.status <= OK || root.nonCssStatus >= root.cssStatus) {
    EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> update global error LED to non-CSS status %d", root.nonCssStatus);
    return root.nonCssStatus;
  }
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : CSS status is worse than non-CSS status");
  EM_TRACE(3, "\nEM_STATUS (QUERY)   : -> update global error LED to CSS status %d", root.cssStatus);
  return root.cssStatus | kCustomerServiceable;
}

}  // namespace emstatus
