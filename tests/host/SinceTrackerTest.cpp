#include <gtest/gtest.h>

#include "host/view/SinceTracker.h"

namespace emstatus::host {
namespace {

WallTime At(int seconds) {
  return WallTime(std::chrono::seconds(seconds));
}

StatusNode Tree(std::initializer_list<std::pair<const char*, std::uint32_t>> leaves) {
  StatusNode root;
  root.id = "root";
  for (const auto& [id, status] : leaves) {
    StatusNode leaf;
    leaf.id = id;
    leaf.status = status;
    root.children.push_back(leaf);
  }
  return root;
}

std::optional<WallTime> Since(const SinceTracker& tracker, const StatusNode& tree) {
  Report report;
  report.root = tree;
  tracker.Tell(report);
  return report.root.children.at(0).since;
}

TEST(SinceTracker, TellsWhenAStatusBegan) {
  SinceTracker tracker;
  EXPECT_EQ(Since(tracker, Tree({{"a", 1}})), std::nullopt);
  tracker.Follow(Tree({{"a", 1}}), At(10));
  tracker.Follow(Tree({{"a", 1}, {"b", 1}}), At(20));
  EXPECT_EQ(Since(tracker, Tree({{"a", 1}})), std::nullopt)
      << "so at the first scan: since when is not known";
  EXPECT_EQ(Since(tracker, Tree({{"b", 1}})), At(20)) << "came later";
  tracker.Follow(Tree({{"a", 3}, {"b", 1}}), At(30));
  tracker.Follow(Tree({{"a", 3}}), At(40));
  EXPECT_EQ(Since(tracker, Tree({{"a", 3}})), At(30));
  EXPECT_EQ(Since(tracker, Tree({{"a", 1}})), std::nullopt)
      << "a tree that is newer than the last scan followed";
  tracker.Follow(Tree({{"a", 1}, {"b", 1}}), At(50));
  EXPECT_EQ(Since(tracker, Tree({{"a", 1}})), At(50)) << "back where it was";
  EXPECT_EQ(Since(tracker, Tree({{"b", 1}})), At(50)) << "was gone in between";
  Report report;
  tracker.Tell(report);
  EXPECT_EQ(report.begun, At(10));
}

}  // namespace
}  // namespace emstatus::host
