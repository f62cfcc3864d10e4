#include "host/recording/DisagreementList.h"

#include <chrono>
#include <utility>

#include "host/machine/TimeText.h"

namespace emstatus::host {
namespace {

std::chrono::system_clock::time_point PointOf(std::int64_t moment) {
  return std::chrono::system_clock::time_point(std::chrono::milliseconds(moment));
}

std::string Capitalised(std::string word) {
  word.front() = static_cast<char>(word.front() - 'a' + 'A');
  return word;
}

nlohmann::ordered_json TextOrNone(const std::string& text) {
  return text.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(text);
}

std::string SideText(const std::string& text) {
  return text.empty() ? "none" : text;
}

}  // namespace

void DisagreementList::Add(std::uint64_t scan, std::int64_t moment,
                           const std::vector<Disagreement>& disagreements) {
  std::map<Disagreement, std::size_t> open;
  for (const Disagreement& disagreement : disagreements) {
    const auto before = open_.find(disagreement);
    if (before != open_.end()) {
      entries_[before->second].last = {scan, moment};
      open.insert(*before);
    } else {
      open[disagreement] = entries_.size();
      entries_.push_back({{scan, moment}, {scan, moment}, disagreement});
    }
  }
  open_ = std::move(open);
}

std::string DisagreementList::SpanText(const Entry& entry) {
  const std::string first =
      "scan " + std::to_string(entry.first.scan) + ", " + LocalText(PointOf(entry.first.time));
  return entry.first.scan == entry.last.scan ? first
                                             : first + ", to scan " + std::to_string(entry.last.scan) + ", " +
                                                   LocalText(PointOf(entry.last.time));
}

std::string DisagreementList::Text() const {
  std::string text;
  std::string span;
  for (const Entry& entry : entries_) {
    if (std::string own = SpanText(entry); own != span) {
      text += own + "\n";
      span = std::move(own);
    }
    text += "  " + entry.disagreement.what + ": " + one_ + " " + SideText(entry.disagreement.one) + ", " +
            other_ + " " + SideText(entry.disagreement.other) + "\n";
  }
  return text;
}

nlohmann::ordered_json DisagreementList::Json() const {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const Entry& entry : entries_) {
    list.push_back({{"FirstScan", entry.first.scan},
                    {"FirstTime", UtcText(PointOf(entry.first.time))},
                    {"LastScan", entry.last.scan},
                    {"LastTime", UtcText(PointOf(entry.last.time))},
                    {"What", entry.disagreement.what},
                    {Capitalised(one_), TextOrNone(entry.disagreement.one)},
                    {Capitalised(other_), TextOrNone(entry.disagreement.other)}});
  }
  return list;
}

}  // namespace emstatus::host
