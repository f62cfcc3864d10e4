#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "host/recording/Disagreement.h"

namespace emstatus::host {

/// The disagreements of all scans; one that goes on from scan to scan is one entry. [one thread]
class DisagreementList {
 public:
  /// What the two sides are called, in lower case: "recorded", "replayed".
  DisagreementList(std::string one, std::string other) : one_(std::move(one)), other_(std::move(other)) {}

  /// Adds those of a scan, which began `moment` milliseconds after 1970. Scans come in order.
  void Add(std::uint64_t scan, std::int64_t moment, const std::vector<Disagreement>& disagreements);

  bool IsEmpty() const { return entries_.empty(); }
  std::size_t Size() const { return entries_.size(); }

  /// For people: a paragraph for each span of scans.
  std::string Text() const;
  /// For programs.
  nlohmann::ordered_json Json() const;

 private:
  struct Moment {
    std::uint64_t scan = 0;
    std::int64_t time = 0;
  };
  struct Entry {
    Moment first;
    Moment last;
    Disagreement disagreement;
  };

  static std::string SpanText(const Entry& entry);

  const std::string one_;
  const std::string other_;
  std::vector<Entry> entries_;
  /// Those of the last scan, by what they are, with their places in `entries_`.
  std::map<Disagreement, std::size_t> open_;
};

}  // namespace emstatus::host
