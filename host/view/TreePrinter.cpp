#include "host/view/TreePrinter.h"

#include <algorithm>
#include <vector>

#include "host/machine/Utf8.h"
#include "host/module/HostCodes.h"
#include "host/view/Colours.h"
#include "host/view/ObjectText.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kIndent = 2;
constexpr std::size_t kGap = 2;

struct Line {
  std::string name;
  std::string word;
  std::string reading;
  std::string remark;
  std::uint32_t status = 0;
};

Line LineOf(const StatusNode& node, std::size_t depth, const StatusWords& words) {
  Line line;
  line.name = std::string(depth * kIndent, ' ') + NodeName(node);
  line.status = node.status;
  line.word = words.Of(node.status);
  if (!node.object) {
    return line;
  }
  if (node.object->address.cabinet != 0) {
    line.name += " (cabinet " + std::to_string(node.object->address.cabinet) + ")";
  }
  line.reading = ReadingOf(*node.object);
  line.remark = RemarkOn(*node.object);
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

std::string Padded(const std::string& shown, std::size_t columns, std::size_t width) {
  return shown + std::string(width - columns, ' ');
}

std::string TrimmedEnd(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

}  // namespace

std::string TreeText(const Report& report, const StatusWords& words, bool colours) {
  std::vector<Line> lines;
  Collect(report.root, 0, words, lines);
  const std::size_t nameWidth = Width(lines, &Line::name);
  const std::size_t wordWidth = Width(lines, &Line::word);
  const std::size_t readingWidth = Width(lines, &Line::reading);
  const std::string gap(kGap, ' ');
  std::string text;
  for (const Line& line : lines) {
    const std::string coloured = InColour(line.word, line.status, colours);
    text += TrimmedEnd(Padded(line.name, ColumnsOf(line.name), nameWidth) + gap +
                       Padded(coloured, ColumnsOf(line.word), wordWidth) + gap +
                       Padded(line.reading, ColumnsOf(line.reading), readingWidth) + gap + line.remark) +
            "\n";
  }
  const std::uint32_t led = report.led & ~kLedCustomerServiceable;
  text += "\nSystem status: " + InColour(words.Of(report.systemStatus), report.systemStatus, colours) + "\n";
  text += "Error LED:     " + InColour(LedText(report.led, words.Of(led)), led, colours) + "\n";
  return text;
}

}  // namespace emstatus::host
