#include "host/recording/Disagreement.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "host/module/HostCodes.h"
#include "host/view/ObjectText.h"

namespace emstatus::host {
namespace {

using nlohmann::ordered_json;

constexpr const char* kChildren = "Children";
constexpr const char* kDesignation = "Desig";
constexpr const char* kStatus = "Status";
const ordered_json kNothing;

std::string StatusText(std::uint32_t status, const StatusWords& words) {
  return std::to_string(status) + " " + words.Of(status);
}

const ordered_json& MemberOf(const ordered_json& node, const std::string& name) {
  const auto found = node.is_object() ? node.find(name) : node.end();
  return found == node.end() ? kNothing : *found;
}

std::string MemberText(const std::string& name, const ordered_json& value, const StatusWords& words) {
  if (value.is_null()) {
    return "";
  }
  const bool isStatus = name.ends_with(kStatus) && name != "ObjStatus" && value.is_number_unsigned();
  if (isStatus) {
    return StatusText(value.get<std::uint32_t>(), words);
  }
  return value.is_string() ? value.get<std::string>()
                           : value.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

/// Walks two trees side by side.
class TreeComparison {
 public:
  TreeComparison(const ScanOutcome& one, const ScanOutcome& other, Extent extent,
                 std::vector<Disagreement>& found)
      : one_(one), other_(other), extent_(extent), found_(found) {}

  void Compare(const ordered_json& one, const ordered_json& other, const std::string& above) {
    const ordered_json& named = one.is_null() ? other : one;
    const ordered_json& designation = MemberOf(named, kDesignation);
    const ordered_json& id = MemberOf(named, "Id");
    const ordered_json& name = designation.is_string() && designation != "" ? designation : id;
    const std::string path = (above.empty() ? "" : above + " > ") + MemberText("", name, one_.words);
    if (one.is_object() && other.is_object() && extent_ == Extent::All) {
      CompareMembers(one, other, path);
    } else {
      CompareMember(one, other, kStatus, path);
    }
    CompareChildren(MemberOf(one, kChildren), MemberOf(other, kChildren), path);
  }

 private:
  void CompareMember(const ordered_json& one, const ordered_json& other, const std::string& name,
                     const std::string& path) {
    const ordered_json& left = MemberOf(one, name);
    const ordered_json& right = MemberOf(other, name);
    if (left != right) {
      const std::string what = extent_ == Extent::All ? path + ": " + name : path;
      found_.push_back({what, MemberText(name, left, one_.words), MemberText(name, right, other_.words)});
    }
  }

  void CompareMembers(const ordered_json& one, const ordered_json& other, const std::string& path) {
    std::set<std::string> names;
    for (const ordered_json* node : {&one, &other}) {
      for (const auto& [name, value] : node->items()) {
        names.insert(name);
      }
    }
    names.erase(kChildren);
    for (const std::string& name : names) {
      CompareMember(one, other, name, path);
    }
  }

  void CompareChildren(const ordered_json& one, const ordered_json& other, const std::string& path) {
    std::map<std::string, std::pair<const ordered_json*, const ordered_json*>> pairs;
    std::vector<std::string> order;
    const auto collect = [&](const ordered_json& children, auto member) {
      for (const ordered_json& child : children) {
        const std::string id = MemberText("", MemberOf(child, "Id"), one_.words);
        const auto [pair, isNew] = pairs.try_emplace(id, &kNothing, &kNothing);
        pair->second.*member = &child;
        if (isNew) {
          order.push_back(id);
        }
      }
    };
    using Pair = std::pair<const ordered_json*, const ordered_json*>;
    collect(one, &Pair::first);
    collect(other, &Pair::second);
    for (const std::string& id : order) {
      const auto& [left, right] = pairs.at(id);
      Compare(*left, *right, path);
    }
  }

  const ScanOutcome& one_;
  const ScanOutcome& other_;
  const Extent extent_;
  std::vector<Disagreement>& found_;
};

struct EventKey {
  std::string subject;
  std::string data;

  friend auto operator<=>(const EventKey&, const EventKey&) = default;
};

/// What each side tells, in order, without what both tell.
void CompareEvents(const ScanOutcome& one, const ScanOutcome& other, std::vector<Disagreement>& found) {
  const auto keyOf = [](const ReplayedEvent& event) {
    return EventKey{event.subject,
                    event.event.data
                        ? event.event.data->dump(-1, ' ', true, nlohmann::json::error_handler_t::replace)
                        : std::string()};
  };
  const auto only = [&](const auto& mine, const auto& theirs, const StatusWords& words, bool first) {
    std::map<EventKey, int> counts;
    for (const ReplayedEvent& event : theirs) {
      ++counts[keyOf(event)];
    }
    for (const ReplayedEvent& event : mine) {
      if (counts[keyOf(event)]-- > 0) {
        continue;
      }
      const std::string text = StatusText(event.status, words);
      found.push_back({"Event " + event.subject, first ? text : "", first ? "" : text});
    }
  };
  only(one.events, other.events, one.words, true);
  only(other.events, one.events, other.words, false);
}

bool SameOrder(const std::vector<ReplayedEvent>& one, const std::vector<ReplayedEvent>& other) {
  return std::ranges::equal(one, other, [](const ReplayedEvent& left, const ReplayedEvent& right) {
    return left.subject == right.subject && left.event.data == right.event.data;
  });
}

}  // namespace

std::vector<Disagreement> Disagreements(const ScanOutcome& one, const ScanOutcome& other, Extent extent) {
  std::vector<Disagreement> found;
  TreeComparison(one, other, extent, found).Compare(one.tree, other.tree, "");
  if (extent == Extent::All && found.empty() && one.tree != other.tree) {
    found.push_back({"Order of nodes or members in the tree", "as it was", "another"});
  }
  if (one.systemStatus != other.systemStatus) {
    found.push_back(
        {"System", StatusText(one.systemStatus, one.words), StatusText(other.systemStatus, other.words)});
  }
  if (one.led != other.led) {
    const auto text = [](const ScanOutcome& side) {
      return LedText(side.led, side.words.Of(side.led & ~kLedCustomerServiceable));
    };
    found.push_back({"Error LED", text(one), text(other)});
  }
  const std::size_t before = found.size();
  CompareEvents(one, other, found);
  if (extent == Extent::All && found.size() == before && !SameOrder(one.events, other.events)) {
    found.push_back({"Order of events", "as it was", "another"});
  }
  return found;
}

}  // namespace emstatus::host
