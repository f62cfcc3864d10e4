#include "host/view/NodeFinder.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "host/configuration/NearestName.h"
#include "host/machine/Utf8.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kMostNamesTold = 3;
constexpr std::size_t kMostNodesTold = 20;
constexpr std::size_t kLongestGuess = 80;

std::string Folded(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](char letter) { return char(std::tolower(std::uint8_t(letter))); });
  return text;
}

std::vector<std::string> NamesOf(const StatusNode& node, bool isInstance) {
  std::vector<std::string> names{NodeName(node), CleanUtf8(node.designation), CleanUtf8(node.name), node.id};
  if (!isInstance) {
    names.push_back(node.section);
  }
  std::erase(names, std::string());
  return names;
}

/// Whether the text names the end of the path, beginning with its first node.
bool Matches(std::span<const StatusNode* const> path, std::size_t depth, std::string_view text, bool fold) {
  for (const std::string& plain : NamesOf(*path.front(), depth > 2)) {
    const std::string name = fold ? Folded(plain) : plain;
    if (path.size() == 1 ? text == name
                         : text.starts_with(name + "/") &&
                               Matches(path.subspan(1), depth + 1, text.substr(name.size() + 1), fold)) {
      return true;
    }
  }
  return false;
}

bool IsCalled(const NodePath& path, std::string_view text, bool fold) {
  const std::span<const StatusNode* const> whole = path;
  for (std::size_t first = 0; first < path.size(); ++first) {
    if (Matches(whole.subspan(first), first, text, fold)) {
      return true;
    }
  }
  return false;
}

void CollectPaths(const StatusNode& node, NodePath& path, std::vector<NodePath>& paths) {
  path.push_back(&node);
  paths.push_back(path);
  for (const StatusNode& child : node.children) {
    CollectPaths(child, path, paths);
  }
  path.pop_back();
}

std::vector<NodePath> Called(const std::vector<NodePath>& paths, const std::string& wanted) {
  std::vector<NodePath> found;
  const auto take = [&](const auto& isMeant) {
    if (found.empty()) {
      std::ranges::copy_if(paths, std::back_inserter(found), isMeant);
    }
  };
  take([&](const NodePath& path) { return path.back()->id == wanted; });
  take([&](const NodePath& path) { return IsCalled(path, wanted, false); });
  take([&](const NodePath& path) { return IsCalled(path, Folded(wanted), true); });
  return found;
}

[[noreturn]] void RefuseSeveral(const std::vector<NodePath>& found, const std::string& wanted) {
  std::string text = "\"" + wanted + "\" names " + std::to_string(found.size()) + " nodes:";
  for (std::size_t at = 0; at < std::min(found.size(), kMostNodesTold); ++at) {
    text += "\n  " + PathText(found[at]) + "  (id " + found[at].back()->id + ")";
  }
  text += found.size() > kMostNodesTold ? "\n  ..." : "";
  throw std::runtime_error(text + "\nGive more of the path, or the id.");
}

[[noreturn]] void RefuseUnknown(const std::vector<NodePath>& paths, const std::string& wanted) {
  std::vector<std::pair<std::size_t, std::string>> rated;
  for (const NodePath& path : paths) {
    std::size_t distance = std::string::npos;
    for (const std::string& name : NamesOf(*path.back(), path.size() > 3)) {
      distance = std::min(distance, NameDistance(wanted.substr(0, kLongestGuess), name));
    }
    rated.emplace_back(distance, PathText(path));
  }
  std::ranges::stable_sort(rated, std::ranges::less{}, &std::pair<std::size_t, std::string>::first);
  std::string text = "there is no node \"" + wanted + "\" in the tree. The nearest:";
  for (std::size_t at = 0; at < std::min(rated.size(), kMostNamesTold); ++at) {
    text += "\n  " + rated[at].second;
  }
  throw std::runtime_error(text + (rated.empty() ? " none" : ""));
}

NodePath FindAmong(const std::vector<NodePath>& paths, const std::string& wanted) {
  const auto found = Called(paths, wanted);
  if (found.empty()) {
    RefuseUnknown(paths, CleanUtf8(wanted));
  }
  // The first one is the topmost where all the others stand below it.
  const StatusNode* const top = found.front().back();
  const bool isOneBranch = std::ranges::all_of(
      found, [&](const NodePath& path) { return std::ranges::find(path, top) != path.end(); });
  if (!isOneBranch) {
    RefuseSeveral(found, CleanUtf8(wanted));
  }
  return found.front();
}

}  // namespace

std::string PathText(std::span<const StatusNode* const> path) {
  std::string text;
  for (const StatusNode* node : path.size() > 1 ? path.subspan(1) : path) {
    text += (text.empty() ? "" : "/") + NodeName(*node);
  }
  return text;
}

NodePath FindNode(const StatusNode& root, const std::string& wanted) {
  std::vector<NodePath> paths;
  NodePath path;
  CollectPaths(root, path, paths);
  return FindAmong(paths, wanted);
}

NodePath FindSubsystem(const StatusNode& root, const std::string& wanted) {
  std::vector<NodePath> paths;
  for (const StatusNode& subsystem : root.children) {
    paths.push_back({&root, &subsystem});
  }
  return FindAmong(paths, wanted);
}

}  // namespace emstatus::host
