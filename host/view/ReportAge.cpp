#include "host/view/ReportAge.h"

#include <cmath>

#include "host/machine/ReadingText.h"
#include "host/machine/TimeText.h"

namespace emstatus::host {
namespace {

constexpr std::chrono::seconds kMoment{1};

void AddSeconds(nlohmann::ordered_json& json, const char* member, double more) {
  if (const auto found = json.find(member); found != json.end() && found->is_number()) {
    *found = std::round((found->get<double>() + more) * 1000.0) / 1000.0;
  }
}

void LetNodeAge(nlohmann::ordered_json& node, double seconds) {
  if (const auto object = node.find("Object"); object != node.end() && object->is_object()) {
    AddSeconds(*object, "AgeSeconds", seconds);
  }
  if (const auto coverage = node.find("Coverage"); coverage != node.end() && coverage->is_object()) {
    // Where nothing was read, nothing is old.
    AddSeconds(*coverage, "OldestSeconds",
               coverage->value("Read", nlohmann::ordered_json()) == 0 ? 0 : seconds);
  }
  if (const auto children = node.find("Children"); children != node.end() && children->is_array()) {
    for (nlohmann::ordered_json& child : *children) {
      LetNodeAge(child, seconds);
    }
  }
}

}  // namespace

void LetAge(nlohmann::ordered_json& report, std::chrono::system_clock::time_point now) {
  const auto time = report.is_object() ? report.find("Time") : report.end();
  const auto tree = report.is_object() ? report.find("Tree") : report.end();
  if (time == report.end() || tree == report.end() || !time->is_string()) {
    return;
  }
  const auto scanned = ReadUtc(time->get<std::string>());
  const auto age = std::chrono::floor<std::chrono::milliseconds>(now - scanned.value_or(now));
  if (age.count() > 0) {
    LetNodeAge(*tree, double(age.count()) / 1000.0);
  }
}

std::string LastScanText(const Report& report, std::chrono::system_clock::time_point now) {
  const auto age = now - report.time;
  if (age < kMoment) {
    return {};
  }
  return "Last scan:     " + LocalText(report.time) + ", " +
         NumberText(double(std::chrono::floor<std::chrono::seconds>(age).count()), Unit::Second) + " ago\n";
}

}  // namespace emstatus::host
