#include "host/providers/NetworkProvider.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "host/providers/KernelText.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr char kFolder[] = "/sys/class/net";
constexpr std::uint64_t kUpFlag = 1;

std::string FolderOf(const std::string& link) {
  return std::string(kFolder) + "/" + link;
}

bool Contains(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

}  // namespace

NetworkProvider::NetworkProvider(std::unique_ptr<SystemFiles> files, std::vector<std::string> required)
    : files_(std::move(files)), required_(std::move(required)) {}

std::vector<Reading> NetworkProvider::Read(const ReadContext&) {
  const FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  const std::map<std::string, Shape> shapes = ReadShapes(names.value);
  std::map<std::string, std::string> bondOf;
  for (const auto& [name, shape] : shapes) {
    for (const std::string& member : shape.members) {
      bondOf[member] = name;
    }
  }
  std::vector<Reading> readings;
  std::map<std::string, LinkFacts> links;
  for (const auto& [name, shape] : shapes) {
    links[name] = ReadLink(name, shape, bondOf[name]);
    if (!shape.isBond && !IsGone(links[name].error)) {
      readings.push_back(TellLink(links[name]));
    }
  }
  for (const auto& [name, shape] : shapes) {
    if (shape.isBond) {
      std::vector<LinkFacts> members;
      for (const std::string& member : shape.members) {
        members.push_back(links[member]);
        members.back().name = member;
      }
      readings.push_back(JudgeBond(links[name], ReadMinLinks(name), members, readings, bonds_[name]));
    }
  }
  TellMissing(readings, names.value);
  return readings;
}

std::map<std::string, NetworkProvider::Shape> NetworkProvider::ReadShapes(
    const std::vector<std::string>& names) {
  std::map<std::string, Shape> shapes;
  for (const std::string& name : names) {
    if (auto shape = ReadShape(name)) {
      shapes.emplace(name, std::move(*shape));
    }
  }
  return shapes;
}

std::optional<NetworkProvider::Shape> NetworkProvider::ReadShape(const std::string& name) {
  const std::string folder = FolderOf(name);
  const FileResult<std::vector<std::string>> entries = files_->List(folder);
  if (!entries || !Contains(entries.value, "operstate") || name == "lo") {
    return std::nullopt;
  }
  Shape shape;
  shape.isBond = Contains(entries.value, "bonding");
  shape.isVirtual = !Contains(entries.value, "device");
  if (shape.isBond) {
    const FileResult<std::string> members = files_->ReadText(folder + "/bonding/slaves", 1U << 16);
    for (const std::string_view member : Words(members.value)) {
      shape.members.emplace_back(member);
    }
  }
  const bool standsOnOthers = std::ranges::any_of(
      entries.value, [](const std::string& entry) { return entry.starts_with("lower_"); });
  const bool told = !shape.isVirtual || shape.isBond || standsOnOthers || IsRequired(name) ||
                    Contains(entries.value, "bridge") || Contains(entries.value, "bonding_slave");
  return told ? std::optional(shape) : std::nullopt;
}

LinkFacts NetworkProvider::ReadLink(const std::string& name, const Shape& shape, const std::string& bond) {
  const std::string folder = FolderOf(name);
  const auto number = [&](const char* attribute) {
    const FileResult<std::string> text = files_->ReadAttribute(folder + attribute);
    return text ? ParseInteger(text.value) : std::nullopt;
  };
  LinkFacts link;
  link.name = name;
  link.isVirtual = shape.isVirtual;
  link.required = IsRequired(name);
  link.bond = bond;
  const FileResult<std::string> operstate = files_->ReadAttribute(folder + "/operstate");
  link.operstate = operstate.value;
  link.error = operstate.error;
  const FileResult<std::string> flags = files_->ReadAttribute(folder + "/flags");
  const auto bits = flags ? ParseUnsigned(flags.value) : std::nullopt;
  link.adminUp = bits ? (*bits & kUpFlag) != 0 : link.operstate != "down";
  if (!link.adminUp) {
    return link;
  }
  if (const auto carrier = number("/carrier")) {
    link.carrier = *carrier != 0;
  }
  if (IsUsable(link)) {
    link.speed = number("/speed");
  }
  if (!link.bond.empty()) {
    const FileResult<std::string> watch = files_->ReadAttribute(folder + "/bonding_slave/mii_status");
    link.worksInBond = !watch || watch.value == "up";
  }
  return link;
}

Reading NetworkProvider::TellLink(const LinkFacts& link) {
  Reading reading = JudgeLink(link, links_[link.name]);
  if (link.error != 0) {
    SetUnread(reading, "operstate", link.error);
  }
  return reading;
}

std::uint32_t NetworkProvider::ReadMinLinks(const std::string& bond) {
  const FileResult<std::string> text = files_->ReadAttribute(FolderOf(bond) + "/bonding/min_links");
  const auto number = text ? ParseUnsigned(text.value) : std::nullopt;
  return static_cast<std::uint32_t>(std::clamp<std::uint64_t>(number.value_or(1), 1, 1024));
}

bool NetworkProvider::IsRequired(const std::string& name) const {
  return Contains(required_, name);
}

void NetworkProvider::TellMissing(std::vector<Reading>& readings,
                                  const std::vector<std::string>& names) const {
  for (const std::string& name : required_) {
    if (!Contains(names, name)) {
      Reading reading;
      reading.objectClass = ObjectClass::NetworkLink;
      reading.id = name;
      reading.name = name;
      reading.quality = Quality::Good;
      reading.condition = Condition::Critical;
      reading.reason = "there is no such link, though it is named as required";
      reading.advice = "look whether the adapter is seen (lspci) and its driver is loaded";
      readings.push_back(std::move(reading));
    }
  }
}

bool NetworkProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  return objectClass == ObjectClass::NetworkBond && bonds_.erase(id) > 0;
}

}  // namespace emstatus::host
