#include "host/providers/LinkFacts.h"

#include <algorithm>
#include <string_view>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr std::uint64_t kUpFlag = 1;

/// The folder of one link.
class LinkFolder {
 public:
  LinkFolder(SystemFiles& files, const std::string& name)
      : files_(files), path_("/sys/class/net/" + name + "/") {}

  FileResult<std::vector<std::string>> List() const { return files_.List(path_); }
  FileResult<std::string> Read(const char* attribute) const {
    return files_.ReadAttribute(path_ + attribute);
  }
  std::string Text(const char* attribute) const { return Read(attribute).value; }
  std::optional<std::int64_t> Number(const char* attribute) const { return ParseInteger(Text(attribute)); }
  std::optional<std::uint64_t> Count(const char* attribute) const { return ParseUnsigned(Text(attribute)); }
  bool Has(const char* entry) const { return !IsGone(files_.List(path_ + entry).error); }
  std::string LongText(const char* attribute) const {
    return files_.ReadText(path_ + attribute, 1U << 16).value;
  }

 private:
  SystemFiles& files_;
  const std::string path_;
};

BondFacts ReadBond(const LinkFolder& folder) {
  BondFacts bond;
  const std::string members = folder.LongText("bonding/slaves");
  for (const std::string_view member : Words(members)) {
    bond.members.emplace_back(member);
  }
  // "802.3ad 4": the word and its number.
  const std::string mode = folder.Text("bonding/mode");
  const auto words = Words(mode);
  bond.mode = words.empty() ? "" : words.front();
  bond.minLinks = static_cast<std::uint32_t>(
      std::clamp<std::uint64_t>(folder.Count("bonding/min_links").value_or(1), 1, 1024));
  if (const auto active = folder.Read("bonding/active_slave"); active && bond.mode == "active-backup") {
    bond.active = active.value;
  }
  if (bond.mode == "802.3ad") {
    bond.partner = folder.Text("bonding/ad_partner_mac");
    bond.aggregator = folder.Text("bonding/ad_aggregator");
  }
  return bond;
}

void ReadState(LinkFacts& link, const LinkFolder& folder) {
  const FileResult<std::string> operstate = folder.Read("operstate");
  const FileResult<std::string> flags = folder.Read("flags");
  if (!operstate || !flags) {
    link.unread = operstate ? "flags" : "operstate";
    link.error = operstate ? flags.error : operstate.error;
    return;
  }
  link.operstate = operstate.value;
  link.adminUp = (ParseUnsigned(flags.value).value_or(0) & kUpFlag) != 0;
  link.losses = folder.Count("carrier_down_count");
  link.damaged = folder.Count("statistics/rx_crc_errors");
  if (!link.adminUp) {
    return;
  }
  if (const auto carrier = folder.Number("carrier")) {
    link.carrier = *carrier != 0;
  }
  if (link.IsUsable()) {
    link.speed = folder.Number("speed");
    link.duplex = folder.Text("duplex");
  }
}

}  // namespace

std::optional<LinkFacts> ReadLinkFacts(SystemFiles& files, const std::string& name) {
  const LinkFolder folder(files, name);
  const FileResult<std::vector<std::string>> entries = folder.List();
  const auto has = [&](std::string_view entry) {
    return std::ranges::find(entries.value, entry) != entries.value.end();
  };
  if (!entries || !has("operstate")) {
    return std::nullopt;
  }
  LinkFacts link;
  link.name = name;
  link.index = folder.Count("ifindex").value_or(0);
  link.isVirtual = !has("device");
  link.isBridge = has("bridge");
  link.standsOnOthers = std::ranges::any_of(
      entries.value, [](const std::string& entry) { return entry.starts_with("lower_"); });
  link.isHandedOut = !link.isVirtual && folder.Has("device/physfn");
  link.isWireless = has("wireless") || has("phy80211");
  link.isInBond = has("bonding_slave");
  ReadState(link, folder);
  if (link.isInBond) {
    link.watch = folder.Text("bonding_slave/mii_status");
    link.aggregator = folder.Text("bonding_slave/ad_aggregator_id");
  }
  if (has("bonding")) {
    link.bond = ReadBond(folder);
  }
  return link;
}

}  // namespace emstatus::host
