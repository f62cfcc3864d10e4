#include "host/providers/NetworkProvider.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <system_error>
#include <utility>

#include "host/providers/Lateness.h"
#include "host/providers/ReadFault.h"

namespace emstatus::host {
namespace {

constexpr char kFolder[] = "/sys/class/net";

bool Contains(const std::vector<std::string>& names, std::string_view name) {
  return std::ranges::find(names, name) != names.end();
}

Reading LinkNamed(const std::string& name) {
  Reading reading;
  reading.objectClass = ObjectClass::NetworkLink;
  reading.id = reading.name = name;
  return reading;
}

}  // namespace

NetworkProvider::NetworkProvider(const FilesFactory& makeFiles, const std::vector<std::string>& required,
                                 std::chrono::milliseconds patience)
    : files_(makeFiles()), required_(required.begin(), required.end()), reads_(makeFiles, patience) {}

std::vector<Reading> NetworkProvider::Read(const ReadContext& context) {
  const std::vector<std::string> names = FindNames();
  std::map<std::string, DeviceReads<std::optional<LinkFacts>>::Take> takes;
  for (const std::string& name : names) {
    takes[name] = [name](SystemFiles& files) { return ReadLinkFacts(files, name); };
  }
  const auto& answers = reads_.Read(takes, context.now);
  Links links;
  for (const auto& [name, answer] : answers) {
    if (answer.sample && *answer.sample && !IsGone((*answer.sample)->error)) {
      LinkFacts& link = links[name] = **answer.sample;
      const bool isOld = context.now - answer.takenAt >= LateAfter();
      link.error = isOld && link.error == 0 ? ETIMEDOUT : link.error;
    }
  }
  std::vector<Reading> readings;
  TellRenamed(readings, names, links);
  for (const auto& [name, answer] : answers) {
    TellLink(readings, name, answer, context.now);
  }
  for (const auto& [name, link] : links) {
    if (link.bond) {
      TellBond(readings, link, links, answers, context.now);
    }
  }
  TellMissing(readings, names, links);
  return readings;
}

std::vector<std::string> NetworkProvider::FindNames() {
  FileResult<std::vector<std::string>> names = files_->List(kFolder);
  if (!names && !IsGone(names.error)) {
    throw std::system_error(names.error, std::generic_category(), kFolder);
  }
  if (!IsRequired("lo")) {
    std::erase(names.value, "lo");
  }
  return std::move(names.value);
}

void NetworkProvider::TellLink(std::vector<Reading>& readings, const std::string& name, const Answer& answer,
                               Clock::time_point now) {
  if (!answer.sample) {
    readings.push_back(LinkNamed(name));
    // It may turn out to be one that is not told.
    readings.back().mayGo = !IsRequired(name);
    SetLate(readings.back(), now - answer.waitingSince.value_or(now));
    return;
  }
  const std::optional<LinkFacts>& link = *answer.sample;
  if (!link || !IsTold(*link) || IsGone(link->error)) {
    return;
  }
  indexes_[name] = link->index;
  std::vector<Reading> told = {JudgeLink(*link, IsRequired(name), links_[name], answer.takenAt)};
  SetAge(told, answer.takenAt, now, LateAfter());
  std::ranges::move(told, std::back_inserter(readings));
}

void NetworkProvider::TellBond(std::vector<Reading>& readings, const LinkFacts& bond, const Links& links,
                               const Answers& answers, Clock::time_point now) {
  std::vector<LinkFacts> members;
  for (const std::string& name : bond.bond->members) {
    const auto link = links.find(name);
    members.push_back(link == links.end() ? LinkFacts{} : link->second);
    members.back().name = name;
    if (answers.contains(name) && !answers.at(name).sample) {
      members.back().error = ETIMEDOUT;
    }
  }
  std::vector<Reading> told = {JudgeBond(bond, IsRequired(bond.name), members, readings, bonds_[bond.name])};
  SetAge(told, answers.at(bond.name).takenAt, now, LateAfter());
  std::ranges::move(told, std::back_inserter(readings));
}

std::string NetworkProvider::NewNameOf(const std::string& name, const Links& links) const {
  const auto index = indexes_.find(name);
  if (index == indexes_.end() || index->second == 0) {
    return "";
  }
  const auto found =
      std::ranges::find_if(links, [&](const auto& entry) { return entry.second.index == index->second; });
  return found == links.end() ? "" : found->first;
}

void NetworkProvider::TellRenamed(std::vector<Reading>& readings, const std::vector<std::string>& names,
                                  const Links& links) {
  for (const auto& [name, index] : indexes_) {
    const std::string newName = Contains(names, name) ? "" : NewNameOf(name, links);
    if (newName.empty() || IsRequired(name)) {
      continue;
    }
    if (const auto memory = links_.find(name); memory != links_.end()) {
      links_.emplace(newName, std::move(memory->second));
      links_.erase(memory);
    }
    readings.push_back(LinkNamed(name));
    readings.back().mayGo = true;
    SetUnknown(readings.back(), Quality::Inactive, "is called " + newName + " now");
  }
}

void NetworkProvider::TellMissing(std::vector<Reading>& readings, const std::vector<std::string>& names,
                                  const Links& links) const {
  for (const std::string& name : required_) {
    if (!Contains(names, name)) {
      const std::string newName = NewNameOf(name, links);
      Reading reading = LinkNamed(name);
      reading.quality = Quality::Good;
      reading.condition = Condition::Critical;
      reading.reason = "there is no such link, though it is named as required" +
                       (newName.empty() ? "" : "; it is called " + newName + " now");
      reading.advice = newName.empty() ? "look whether the adapter is seen (lspci) and its driver is loaded"
                                       : "name it as it is called now in emhost's list";
      readings.push_back(std::move(reading));
    }
  }
}

bool NetworkProvider::IsRequired(const std::string& name) const {
  return required_.contains(name);
}

bool NetworkProvider::IsTold(const LinkFacts& link) const {
  if (link.bond) {
    return false;
  }
  return !link.isVirtual || link.standsOnOthers || link.isBridge || link.isInBond || IsRequired(link.name);
}

bool NetworkProvider::Confirm(ObjectClass objectClass, const std::string& id) {
  if (objectClass == ObjectClass::NetworkLink) {
    return links_.erase(id) > 0;
  }
  return objectClass == ObjectClass::NetworkBond && bonds_.erase(id) > 0;
}

}  // namespace emstatus::host
