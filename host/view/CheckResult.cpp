#include "host/view/CheckResult.h"

#include <algorithm>
#include <string_view>

#include "host/machine/ReadingText.h"
#include "host/machine/Utf8.h"
#include "host/view/Causes.h"
#include "host/view/KnowledgeText.h"
#include "host/view/ObjectText.h"
#include "host/view/PerformanceData.h"
#include "host/view/SimulationText.h"

namespace emstatus::host {
namespace {

/// Pagers and mails show no more.
constexpr std::size_t kLongestLine = 79;

const char* WordOfCode(int code) {
  constexpr const char* kCodeWords[] = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
  return kCodeWords[code];
}

/// One line that holds no "|", behind which a reader would look for performance data.
std::string OneLine(std::string text) {
  std::ranges::replace_if(
      text, [](char letter) { return std::uint8_t(letter) < ' '; }, ' ');
  std::ranges::replace(text, '|', '/');
  return CleanUtf8(text);
}

/// Cut behind a whole character.
std::string Shortened(const std::string& text, std::size_t columns) {
  constexpr std::string_view kDots = "...";
  if (ColumnsOf(text) <= columns) {
    return text;
  }
  std::size_t end = 0;
  for (std::size_t shown = 0; shown + kDots.size() < columns; ++shown) {
    ++end;
    while (end < text.size() && ColumnsOf(text.substr(end, 1)) == 0) {
      ++end;
    }
  }
  return text.substr(0, end) + std::string(kDots);
}

/// Whether more is known of an unread leaf than that nothing is: it was there and is gone, or it is forced.
bool SaysSomething(const StatusNode& leaf) {
  return leaf.simulated || (leaf.object && leaf.object->reading.quality == Quality::Lost);
}

bool AnySaysSomething(const StatusNode& node) {
  return node.children.empty() ? SaysSomething(node) : std::ranges::any_of(node.children, AnySaysSomething);
}

bool IsNothingKnown(const StatusNode& node) {
  return node.coverage.total != 0 && node.coverage.read == 0 && !AnySaysSomething(node);
}

std::string CauseText(const NodePath& path, const StatusWords& words) {
  const StatusNode& leaf = *path.back();
  std::string name = NodeName(leaf);
  if (path.size() > 3) {
    name = NodeName(*path[path.size() - 2]) + ", " + name;
  }
  const std::string remark = leaf.object ? RemarkOn(*leaf.object) : AbsenceText(leaf);
  const std::string reading = leaf.object ? ReadingOf(*leaf.object) : std::string();
  std::string text = name + ": " + StatusText(leaf, words.Of(leaf.status));
  if (!remark.empty() || !reading.empty()) {
    text += ", " + (remark.empty() ? reading : remark);
  }
  return text;
}

std::string AgeText(std::chrono::system_clock::duration age) {
  return NumberText(double(std::chrono::floor<std::chrono::seconds>(age).count()), Unit::Second);
}

/// Why the report says nothing of now; empty when it does.
std::string StaleReport(const Report& report, std::chrono::system_clock::time_point now,
                        std::chrono::seconds maximumAge) {
  const auto age = now - report.time;
  if (age > maximumAge) {
    return "the last scan of emhost is " + AgeText(age) + " old: it hangs or is stopped";
  }
  return age < -maximumAge ? "the report of emhost is " + AgeText(-age) + " in the future: check the clock"
                           : std::string();
}

int CodeOf(const NodePath& node, const Report& report) {
  const std::uint32_t status = StatusThatCounts(node, report);
  return IsNothingKnown(*node.back()) && status < 3 ? CheckResult::kUnknownCode : ExitCodeOf(status);
}

/// The first line without its code.
std::string Summary(const NodePath& node, const std::vector<NodePath>& causes, const Report& report,
                    const StatusWords& words) {
  if (!causes.empty()) {
    return CauseText(causes.front(), words);
  }
  const StatusNode& last = *node.back();
  const std::string reading = last.object ? ReadingOf(*last.object) : std::string();
  return (node.size() == 1 ? NodeName(last) : PathText(node)) + ": " +
         words.Of(StatusThatCounts(node, report)) + ", " +
         (reading.empty() ? CoverageText(last.coverage) : reading);
}

}  // namespace

CheckResult UnknownResult(const std::string& why) {
  const std::size_t end = std::min(why.find('\n'), why.size());
  CheckResult result;
  const std::string first = "UNKNOWN - " + OneLine(why.substr(0, end));
  result.output = Shortened(first, kLongestLine) + "\n";
  if (ColumnsOf(first) > kLongestLine) {
    result.output += first + "\n";
  }
  std::string rest = why.substr(std::min(end + 1, why.size()));
  std::ranges::replace(rest, '|', '/');
  result.output += rest.empty() ? rest : CleanUtf8(rest) + "\n";
  return result;
}

CheckResult CheckNode(const NodePath& node, const Report& report, const StatusWords& words,
                      std::chrono::system_clock::time_point now, std::chrono::seconds maximumAge) {
  if (const std::string stale = StaleReport(report, now, maximumAge); !stale.empty()) {
    return UnknownResult(stale);
  }
  const auto causes = CausesOf(node);
  CheckResult result;
  result.code = CodeOf(node, report);
  std::string ending = causes.size() > 1 ? " (+" + std::to_string(causes.size() - 1) + " more)" : "";
  if (report.simulation.InForce()) {
    ending += " (parts are simulated)";
  }
  const std::string summary =
      std::string(WordOfCode(result.code)) + " - " + OneLine(Summary(node, causes, report, words));
  result.output = Shortened(summary, kLongestLine - ColumnsOf(ending)) + ending;
  if (const std::string numbers = PerformanceData(node); !numbers.empty()) {
    result.output += " | " + numbers;
  }
  result.output += "\n";
  for (const NodePath& cause : causes) {
    result.output += OneLine(CauseText(cause, words)) + "\n";
  }
  if (!causes.empty()) {
    result.output += OneLine(CoverageText(node.back()->coverage)) + "\n";
  }
  if (report.simulation.InForce()) {
    result.output += OneLine(BannerText(report.simulation, words)) + "\n";
  }
  return result;
}

}  // namespace emstatus::host
