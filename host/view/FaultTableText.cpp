#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <string_view>

#include "host/machine/Utf8.h"
#include "host/module/HostCodes.h"
#include "host/view/Colours.h"
#include "host/view/FaultTable.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kColumnGap = 2;
constexpr std::size_t kFaultColumns = 10;

struct FaultCell {
  std::string text;
  /// Gives it a colour.
  std::optional<std::uint32_t> status = std::nullopt;
};
using FaultLine = std::array<FaultCell, kFaultColumns>;
using FaultWidths = std::array<std::size_t, kFaultColumns>;

std::string JoinedTexts(const std::vector<std::string>& texts, std::string_view between) {
  std::string joined;
  for (const std::string& text : texts) {
    joined += (joined.empty() ? "" : std::string(between)) + text;
  }
  return joined;
}

std::string FaultWords(const std::vector<Fault>& faults) {
  std::vector<std::string> all;
  for (const Fault fault : faults) {
    all.emplace_back(WordOf(fault));
  }
  return JoinedTexts(all, ", ");
}

std::string EventWords(const FaultEffect& effect) {
  std::vector<std::string> kinds;
  const auto add = [&](std::size_t count, const char* kind) {
    if (count != 0) {
      kinds.push_back((count == 1 ? "" : std::to_string(count) + " x ") + kind);
    }
  };
  add(effect.instanceEvents, "part");
  add(effect.systemEvents, "system");
  add(effect.ledChanges, "LED");
  return kinds.empty() ? "none" : JoinedTexts(kinds, ", ");
}

std::string NoteOn(const FaultRow& row) {
  std::vector<std::string> notes;
  if (!row.effect.shows) {
    notes.emplace_back("changes nothing");
  }
  if (!row.effect.ends) {
    notes.emplace_back("does not end");
  }
  if (row.effect.scans > 1) {
    notes.push_back("from scan " + std::to_string(row.effect.scans));
  }
  if (!row.effect.others.empty()) {
    notes.push_back("also " + JoinedTexts(row.effect.others, "; "));
  }
  return JoinedTexts(notes, "; ");
}

FaultCell LedCell(std::uint32_t led, const StatusWords& words) {
  const std::uint32_t status = led & ~kLedCustomerServiceable;
  return {words.Of(status) + ((led & kLedCustomerServiceable) != 0 ? ", customer" : ""), status};
}

FaultLine LineOfRow(const FaultRow& row, bool first, const StatusWords& words) {
  const FaultEffect& effect = row.effect;
  const auto cell = [&](std::uint32_t status) { return FaultCell{words.Of(status), status}; };
  return {FaultCell{first ? "  " + row.place.part : std::string()},
          FaultCell{FaultWords(row.faults)},
          cell(effect.part),
          cell(effect.component),
          cell(effect.subsystem),
          cell(effect.system),
          LedCell(effect.led, words),
          FaultCell{EventWords(effect)},
          FaultCell{std::to_string(ExitCodeOf(effect.system))},
          FaultCell{NoteOn(row)}};
}

std::string PaddedLine(const FaultLine& line, const FaultWidths& widths, bool colours) {
  std::string text;
  for (std::size_t column = 0; column < kFaultColumns; ++column) {
    const FaultCell& cell = line[column];
    text += cell.status ? InColour(cell.text, *cell.status, colours) : cell.text;
    text += std::string(widths[column] - ColumnsOf(cell.text) + kColumnGap, ' ');
  }
  text.erase(text.find_last_not_of(' ') + 1);
  return text + "\n";
}

/// The parts in groups by component, each under its name.
std::string FaultGroups(const FaultTable& table, const StatusWords& words, bool colours) {
  std::vector<FaultLine> lines{{FaultCell{"part"}, FaultCell{"fault"}, FaultCell{"part is"},
                                FaultCell{"component"}, FaultCell{"subsystem"}, FaultCell{"system"},
                                FaultCell{"error LED"}, FaultCell{"events"}, FaultCell{"exit"},
                                FaultCell{""}}};
  const FaultRow* before = nullptr;
  for (const FaultRow& row : table.rows) {
    lines.push_back(LineOfRow(row, before == nullptr || before->place != row.place, words));
    before = &row;
  }
  FaultWidths widths{};
  for (const FaultLine& line : lines) {
    for (std::size_t column = 0; column < kFaultColumns; ++column) {
      widths[column] = std::max(widths[column], ColumnsOf(line[column].text));
    }
  }
  std::string text = PaddedLine(lines[0], widths, colours);
  std::string_view subsystem;
  std::string_view section;
  for (std::size_t row = 0; row < table.rows.size(); ++row) {
    const FaultPlace& place = table.rows[row].place;
    if (place.subsystem != subsystem || place.section != section) {
      text += "\n" + place.subsystem + ", " + place.component + "\n";
      subsystem = place.subsystem;
      section = place.section;
    }
    text += PaddedLine(lines[row + 1], widths, colours);
  }
  return text;
}

std::string FaultLineOf(const FaultRow& row) {
  return "  " + row.place.subsystem + ", " + row.place.component + ", " + row.place.part + ": " +
         FaultWords(row.faults) + "\n";
}

template <typename Wanted>
std::string FaultListOf(const FaultTable& table, const std::string& title, const Wanted& wanted) {
  std::string list;
  for (const FaultRow& row : table.rows) {
    list += wanted(row) ? FaultLineOf(row) : std::string();
  }
  return list.empty() ? std::string() : title + "\n" + list;
}

std::string FaultListOf(const std::vector<std::string>& names, const std::string& title) {
  return names.empty() ? std::string() : title + "\n  " + JoinedTexts(names, "\n  ") + "\n";
}

std::string FaultSummary(const FaultTable& table) {
  std::size_t faults = 0;
  std::size_t parts = 0;
  std::size_t unanswered = 0;
  const FaultRow* before = nullptr;
  for (const FaultRow& row : table.rows) {
    faults += row.faults.size();
    parts += before == nullptr || before->place != row.place ? 1U : 0U;
    unanswered += !row.effect.shows && !row.IsWrong() ? 1U : 0U;
    before = &row;
  }
  std::string text = std::to_string(faults) + " faults of " + std::to_string(parts) + " parts.\n";
  if (unanswered != 0) {
    text +=
        "Parts that keep their status when they are not answered for: " + std::to_string(unanswered) + ".\n";
  }
  return text;
}

}  // namespace

std::string FaultTableText(const FaultTable& table, const StatusWords& words, bool colours) {
  std::string text = "With everything good: system " + words.Of(table.system) + ", error LED " +
                     LedCell(table.led, words).text + "\n";
  text += FaultListOf(table.neverGood, "Not good even then:");
  text += "\n" + FaultGroups(table, words, colours) + "\n" + FaultSummary(table);
  text += FaultListOf(table.notForced, "These stand for no object and were not made to fail:");
  text += FaultListOf(table.notAsked, "Nothing asks about:");
  text += FaultListOf(table, "These faults change nothing:", [](const FaultRow& row) {
    return row.IsWrong() && !row.effect.shows;
  });
  text +=
      FaultListOf(table, "These faults do not end:", [](const FaultRow& row) { return !row.effect.ends; });
  return text;
}

}  // namespace emstatus::host
