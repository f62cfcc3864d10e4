#include "host/view/TreePrinter.h"

#include <algorithm>
#include <vector>

#include "host/machine/Utf8.h"
#include "host/module/HostCodes.h"
#include "host/view/Colours.h"
#include "host/view/KnowledgeText.h"
#include "host/view/ObjectText.h"
#include "host/view/SimulationText.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;
constexpr std::uint32_t kWarning = 2;

struct Line {
  std::string name;
  std::string word;
  std::string reading;
  std::string remark;
  std::uint32_t status = 0;
};

void AddRemark(std::string& remark, const std::string& more) {
  remark += (remark.empty() || more.empty() ? "" : "; ") + more;
}

/// Coverage of all but leaves, which show their reading; redundancy where there is any.
std::string KnowledgeOf(const StatusNode& node) {
  std::string remark = node.children.empty() ? std::string() : CoverageText(node.coverage);
  if (node.margin && !node.margin->group.empty()) {
    AddRemark(remark, MarginText(*node.margin));
  }
  return remark;
}

Line LineOf(const StatusNode& node, std::size_t depth, const StatusWords& words) {
  Line line;
  line.name = std::string(depth * kIndent, ' ') + NodeName(node);
  line.status = node.status;
  line.word = StatusText(node, words.Of(node.status));
  line.remark = KnowledgeOf(node);
  if (!node.object) {
    AddRemark(line.remark, node.children.empty() ? AbsenceText(node) : std::string());
    return line;
  }
  if (node.object->address.cabinet != 0) {
    line.name += " (cabinet " + std::to_string(node.object->address.cabinet) + ")";
  }
  line.reading = ReadingOf(*node.object);
  AddRemark(line.remark, CleanLine(RemarkOn(*node.object)));
  if (node.isCss && (node.status == 2 || node.status == 3)) {
    line.remark += line.remark.empty() ? "the customer can mend it" : " (the customer can mend it)";
  }
  return line;
}

void Collect(const StatusNode& node, std::size_t depth, const StatusWords& words, std::vector<Line>& lines) {
  lines.push_back(LineOf(node, depth, words));
  for (const StatusNode& child : node.children) {
    Collect(child, depth + 1, words, lines);
  }
}

std::size_t Width(const std::vector<Line>& lines, std::string Line::*column) {
  std::size_t width = 0;
  for (const Line& line : lines) {
    width = std::max(width, ColumnsOf(line.*column));
  }
  return width;
}

struct Widths {
  std::size_t name;
  std::size_t word;
  std::size_t reading;
};

std::string Padded(const std::string& shown, std::size_t columns, std::size_t width) {
  return width == 0 ? std::string() : shown + std::string(width - columns + kGap, ' ');
}

std::string TrimmedEnd(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::string LineText(const Line& line, const Widths& widths, bool colours) {
  return TrimmedEnd(Padded(line.name, ColumnsOf(line.name), widths.name) +
                    Padded(InColour(line.word, line.status, colours), ColumnsOf(line.word), widths.word) +
                    Padded(line.reading, ColumnsOf(line.reading), widths.reading) + line.remark);
}

}  // namespace

std::string TreeText(const Report& report, const StatusWords& words, bool colours) {
  std::vector<Line> lines;
  Collect(report.root, 0, words, lines);
  const Widths widths{Width(lines, &Line::name), Width(lines, &Line::word), Width(lines, &Line::reading)};
  std::string text;
  for (const Line& line : lines) {
    text += LineText(line, widths, colours) + "\n";
  }
  const std::uint32_t led = report.led & ~kLedCustomerServiceable;
  text += "\nSystem status: " + InColour(words.Of(report.systemStatus), report.systemStatus, colours) + "\n";
  text += "Error LED:     " + InColour(LedText(report.led, words.Of(led)), led, colours) + "\n";
  if (report.simulation.InForce()) {
    text += InColour(BannerText(report.simulation, words), kWarning, colours) + "\n";
  }
  return text;
}

}  // namespace emstatus::host
