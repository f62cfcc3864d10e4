#include <algorithm>
#include <cmath>

#include "host/machine/ReadingText.h"
#include "host/machine/Utf8.h"
#include "host/view/Causes.h"
#include "host/view/Colours.h"
#include "host/view/Explanation.h"
#include "host/view/KnowledgeText.h"
#include "host/view/ObjectText.h"
#include "host/view/SimulationText.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kLabelColumns = 14;
constexpr std::size_t kEvidenceColumns = 32;

/// Writes "  Label         text" for each text that is not empty.
class Facts {
 public:
  void Add(const std::string& label, const std::string& text) {
    if (!text.empty()) {
      text_ += "  " + label + std::string(kLabelColumns - label.size(), ' ') + CleanLine(text) + "\n";
    }
  }
  const std::string& Text() const { return text_; }

 private:
  std::string text_;
};

std::string QualityText(const StatusNode& leaf) {
  if (!leaf.object) {
    return AbsenceText(leaf);
  }
  const double seconds = std::floor(double(leaf.object->age.count()) / 1000.0);
  return std::string(WordOf(leaf.object->reading.quality)) + ", age " + NumberText(seconds, Unit::Second);
}

std::string LimitsText(const Measurement& measurement) {
  std::string text;
  const auto add = [&](const char* what, const std::optional<double>& limit) {
    if (limit) {
      text += (text.empty() ? "" : ", ") + std::string(what) + " " + NumberText(*limit, measurement.unit);
    }
  };
  add("failed below", measurement.limits.lowerCritical);
  add("warning below", measurement.limits.lowerWarning);
  add("warning from", measurement.limits.upperWarning);
  add("failed from", measurement.limits.upperCritical);
  return text.empty() ? text : " (" + text + ")";
}

std::string ReadingText(const StatusNode& leaf) {
  const std::string reading = leaf.object ? ReadingOf(*leaf.object) : std::string();
  return reading.empty() ? reading : reading + LimitsText(*leaf.object->reading.measurement);
}

std::string WhyText(const StatusNode& leaf, const Report& report) {
  if (leaf.simulated) {
    return "none: it is simulated " + EndText(report.simulation);
  }
  if (!leaf.rule) {
    return "not known";
  }
  return RuleText(*leaf.rule) + (leaf.rule->key == "StatusValueQueryFail" ? ": there was no answer" : "");
}

std::string GroupFact(const StatusNode& leaf, const RedundancyMargin* margin) {
  if (!leaf.object || !leaf.object->reading.redundancy) {
    return {};
  }
  const Redundancy& group = *leaf.object->reading.redundancy;
  std::string text = group.group + ": " + std::to_string(group.present) + " of " +
                     std::to_string(group.members) + " work, " + std::to_string(group.needed) + " needed";
  return margin == nullptr ? text : text + "; the component " + MarginText(*margin);
}

std::string LeafFacts(const NodePath& path, const Report& report) {
  const StatusNode& leaf = *path.back();
  const StatusNode& component = path.size() > 3 ? *path[path.size() - 2] : leaf;
  Facts facts;
  facts.Add("Reading", ReadingText(leaf));
  facts.Add("Quality", QualityText(leaf));
  if (leaf.object) {
    facts.Add("Reason", leaf.object->reading.reason);
  }
  facts.Add("Raw value", RawValueText(leaf));
  facts.Add("Rule", WhyText(leaf, report));
  if (IsStale(leaf)) {
    facts.Add("Stale", "the status is one from before; what it is now is not known");
  }
  facts.Add("Since", SinceText(leaf, report));
  facts.Add("Redundancy", GroupFact(leaf, component.margin ? &*component.margin : nullptr));
  if (IsCovered(path)) {
    facts.Add("Covered", "redundancy keeps this from making the component fail");
  }
  if (leaf.object) {
    facts.Add("What to do", leaf.object->reading.advice);
  }
  facts.Add("Serviceable", leaf.isCss ? "by the customer" : "not by the customer");
  return facts.Text();
}

std::string ShownStatus(const StatusNode& node, const StatusWords& words, bool colours) {
  return InColour(StatusText(node, words.Of(node.status)), node.status, colours);
}

/// "Server Warning > Fans Warning > Fan 2 Error".
std::string ChainText(const NodePath& path, const StatusWords& words, bool colours) {
  std::string text;
  for (const StatusNode* node : path) {
    text += (text.empty() ? "" : " > ") + NodeName(*node) + " " + ShownStatus(*node, words, colours);
  }
  return text;
}

std::string HeadText(const NodePath& node, const Report& report, const StatusWords& words, bool colours) {
  const StatusNode& last = *node.back();
  std::string text = PathText(node) + ": " + ShownStatus(last, words, colours) + "\n";
  if (node.size() == 1 && report.systemStatus != last.status) {
    text += "The system counts as " + InColour(words.Of(report.systemStatus), report.systemStatus, colours) +
            ": redundancy covers the rest.\n";
  } else if (IsCovered(node)) {
    text += "It counts as " + words.Of(StatusThatCounts(node, report)) + ": redundancy covers what failed.\n";
  }
  Facts facts;
  facts.Add("Configured", "[" + last.section + "]" + (last.name.empty() ? "" : " ") + last.name);
  if (!last.children.empty()) {
    facts.Add("Since", SinceText(last, report));
    facts.Add("Coverage", CoverageText(last.coverage));
  }
  if (last.margin) {
    facts.Add("Redundancy", MarginText(*last.margin));
  }
  return text + facts.Text();
}

/// What stands directly below a node that is good.
std::string EvidenceText(const StatusNode& node, const StatusWords& words, bool colours) {
  std::string text = "\nNothing is wrong below it:\n";
  for (const StatusNode& child : node.children) {
    const std::string name = NodeName(child);
    const std::string padding(kEvidenceColumns - std::min(kEvidenceColumns - 2, ColumnsOf(name)), ' ');
    text += "  " + name + padding + ShownStatus(child, words, colours) + "  " +
            (child.object ? ReadingOf(*child.object) : CoverageText(child.coverage));
    text.erase(text.find_last_not_of(' ') + 1);
    text += "\n";
  }
  return text;
}

}  // namespace

std::string ExplanationText(const NodePath& node, const Report& report, const StatusWords& words,
                            bool colours) {
  std::string text = HeadText(node, report, words, colours);
  const auto causes = CausesOf(node);
  if (node.back()->children.empty()) {
    text += LeafFacts(node, report);
  } else if (causes.empty()) {
    text += EvidenceText(*node.back(), words, colours);
  } else {
    for (const NodePath& cause : causes) {
      text += "\n" + ChainText(cause, words, colours) + "\n" + LeafFacts(cause, report);
    }
  }
  if (report.simulation.InForce()) {
    text += "\n" + BannerText(report.simulation, words) + "\n";
  }
  return text;
}

}  // namespace emstatus::host
