#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/providers/DeviceReads.h"
#include "host/providers/NetworkJudge.h"
#include "host/providers/Provider.h"

namespace emstatus::host {

/// Network links and bonds. Links that software made are told only when they stand on others (bridges,
/// VLANs); loopback, tunnels and the ends of container links are not. Each is read on a lane of its own.
class NetworkProvider final : public Provider {
 public:
  /// `required`: links that must be up whatever the administrator has set.
  NetworkProvider(const FilesFactory& makeFiles, const std::vector<std::string>& required,
                  std::chrono::milliseconds patience = ReadLanes::kPatience);

  std::string_view Name() const override { return "network"; }
  std::chrono::milliseconds Interval() const override { return std::chrono::seconds(2); }
  std::vector<Reading> Read(const ReadContext& context) override;
  /// Takes the members that a bond has now for all that it needs, and the state of a link for how it is
  /// meant.
  bool Confirm(ObjectClass objectClass, const std::string& id) override;

 private:
  using Clock = std::chrono::steady_clock;
  /// Absent when it turned out not to be a link.
  using Answer = DeviceAnswer<std::optional<LinkFacts>>;
  using Answers = std::map<std::string, Answer>;
  using Links = std::map<std::string, LinkFacts>;

  std::vector<std::string> FindNames();
  void TellLink(std::vector<Reading>& readings, const std::string& name, const Answer& answer,
                Clock::time_point now);
  void TellBond(std::vector<Reading>& readings, const LinkFacts& bond, const Links& links,
                const Answers& answers, Clock::time_point now);
  void TellRenamed(std::vector<Reading>& readings, const std::vector<std::string>& names, const Links& links);
  void TellMissing(std::vector<Reading>& readings, const std::vector<std::string>& names,
                   const Links& links) const;
  bool IsRequired(const std::string& name) const;
  bool IsTold(const LinkFacts& link) const;
  /// The link that `name` is called now; empty when it is not known under another name.
  std::string NewNameOf(const std::string& name, const Links& links) const;

  const std::unique_ptr<SystemFiles> files_;
  const std::set<std::string> required_;
  DeviceReads<std::optional<LinkFacts>> reads_;
  std::map<std::string, LinkMemory> links_;
  std::map<std::string, BondMemory> bonds_;
  /// The index of each link that was told, under every name that it had.
  std::map<std::string, std::uint64_t> indexes_;
};

}  // namespace emstatus::host
