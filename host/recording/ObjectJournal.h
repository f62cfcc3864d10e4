#pragma once

#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/machine/Machine.h"
#include "host/recording/RecordedScan.h"
#include "host/view/StatusNode.h"

namespace emstatus::host {

/// Notes how the objects behind a tree change from scan to scan, and makes the objects of those notes again.
/// [one thread at a time]
class ObjectJournal {
 public:
  /// What has changed at the objects of the tree since the last call. A reading that only grows older has
  /// not.
  std::vector<RecordedObject> Note(const StatusNode& root, const Machine& machine);

  /// Takes over what Note() said.
  void Apply(const RecordedObject& entry);

  /// Members as ObjectJson() writes them; null when there is no such object.
  const nlohmann::json* Find(const ObjectAddress& address) const;

 private:
  std::map<ObjectAddress, nlohmann::json> objects_;
};

}  // namespace emstatus::host
