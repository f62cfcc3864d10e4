#include "host/view/KnowledgeText.h"

#include <cmath>

#include "host/machine/ReadingText.h"
#include "host/machine/TimeText.h"
#include "host/machine/Utf8.h"
#include "host/view/AssociationKey.h"

namespace emstatus::host {

std::string CoverageText(const Coverage& coverage) {
  if (coverage.total == 0) {
    return "nothing to read";
  }
  const std::string read = std::to_string(coverage.read) + " of " + std::to_string(coverage.total) + " read";
  return coverage.read == 0
             ? read
             : read + ", oldest " +
                   NumberText(std::floor(double(coverage.oldest.count()) / 1000.0), Unit::Second);
}

std::string AbsenceText(const StatusNode& leaf) {
  return leaf.object || leaf.coverage.total == 0 ? "" : "there is no such object now";
}

std::string MarginText(const RedundancyMargin& margin) {
  const std::string group = margin.group.empty() ? "" : " (" + CleanUtf8(margin.group) + ")";
  if (!margin.failures) {
    return "not known how many failures are tolerated" + group;
  }
  if (margin.present < margin.needed) {
    return "redundancy is insufficient" + group;
  }
  return *margin.failures == 0 ? "tolerates no more failure" + group
                               : "tolerates " + std::to_string(*margin.failures) + " more failure" +
                                     (*margin.failures == 1 ? "" : "s") + group;
}

std::string StatusText(const StatusNode& node, const std::string& statusWord) {
  return statusWord + (node.simulated ? " (simulated)" : IsStale(node) ? " (stale)" : "");
}

std::string SinceText(const StatusNode& node, const Report& report) {
  if (node.since) {
    return LocalText(*node.since);
  }
  return report.begun && *report.begun < report.time - std::chrono::seconds(1)
             ? "at least since " + LocalText(*report.begun) + ", the first scan"
             : "not known: this is the first scan";
}

std::string RawStateWord(const StatusNode& leaf) {
  const auto question = QuestionOfKey(leaf.associationKey);
  if (!leaf.objectStatus ||
      (question != Question::State && question != Question::StateAbove && question != Question::StateBelow)) {
    return {};
  }
  constexpr struct {
    RawState state;
    const char* word;
  } kWords[] = {{RawState::Good, "good"},
                {RawState::Warning, "warning"},
                {RawState::Failed, "failed"},
                {RawState::Late, "late"},
                {RawState::SensorFault, "sensor fault"},
                {RawState::Implausible, "implausible"},
                {RawState::Inactive, "inactive"},
                {RawState::Lost, "lost"}};
  for (const auto& row : kWords) {
    if (std::uint32_t(row.state) == *leaf.objectStatus) {
      return row.word;
    }
  }
  return {};
}

std::string RawValueText(const StatusNode& leaf) {
  if (!leaf.objectStatus) {
    return {};
  }
  const std::string word = RawStateWord(leaf);
  return std::to_string(std::int32_t(*leaf.objectStatus)) + (word.empty() ? "" : " (" + word + ")");
}

std::string RuleText(const Rule& rule) {
  const std::string place = rule.file + (rule.line == 0 ? "" : ":" + std::to_string(rule.line));
  return CleanUtf8(place + ", [" + rule.section + "]" + (rule.key.empty() ? "" : " " + rule.key) +
                   (rule.line == 0 ? " (the default)" : ""));
}

}  // namespace emstatus::host
