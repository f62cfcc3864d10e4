#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/providers/NetworkJudge.h"
#include "host/providers/Provider.h"
#include "host/providers/SystemFiles.h"

namespace emstatus::host {

/// Network links and bonds. Links that software made are told only when they stand on others (bridges,
/// VLANs); loopback, tunnels and the ends of container links are not.
class NetworkProvider final : public Provider {
 public:
  /// `required`: links that must be up whatever the administrator has set.
  NetworkProvider(std::unique_ptr<SystemFiles> files, std::vector<std::string> required);

  std::string_view Name() const override { return "network"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(2); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Takes the members that a bond has now for all that it needs.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  /// What the folder of a link says it is.
  struct Shape {
    bool isVirtual = false;
    bool isBond = false;
    /// Of a bond: the names of its members.
    std::vector<std::string> members;
  };

  std::map<std::string, Shape> ReadShapes(const std::vector<std::string>& names);
  /// Absent for a link that is not told.
  std::optional<Shape> ReadShape(const std::string& name);
  LinkFacts ReadLink(const std::string& name, const Shape& shape, const std::string& bond);
  Reading TellLink(const LinkFacts& link);
  std::uint32_t ReadMinLinks(const std::string& bond);
  bool IsRequired(const std::string& name) const;
  void TellMissing(std::vector<Reading>& readings, const std::vector<std::string>& names) const;

  const std::unique_ptr<SystemFiles> files_;
  const std::vector<std::string> required_;
  std::map<std::string, LinkMemory> links_;
  std::map<std::string, LinkMemory> bonds_;
};

}  // namespace emstatus::host
