#pragma once

#include "host/configuration/Configuration.h"
#include "host/view/StatusNode.h"

/// What a configuration says of the nodes of a tree that was made by it. [any thread]
namespace emstatus::host {

/// Finds out which definition answered for each component, the primary or its alternative, and which rule
/// made the status of each leaf. After NameNodes, MarkSimulated and AttachObjects.
void ApplyRules(StatusNode& root, const Configuration& configuration);

/// Finds the objects of the components that have a constant number of instances: they are asked one by one
/// but shown as one node. That gets the object whose state decided, and the coverage of all of them. After
/// ApplyRules.
void AttachConstantObjects(StatusNode& root, const Configuration& configuration, const Machine& machine,
                           std::uint32_t ownCabinet);

/// Tells the margin of each component with redundancy, from what its parts tell of their groups. After all
/// objects are attached.
void TellMargins(StatusNode& root, const Configuration& configuration);

}  // namespace emstatus::host
