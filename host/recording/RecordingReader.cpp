#include "host/recording/RecordingReader.h"

#include <stdexcept>
#include <utility>

#include "host/recording/RecordingLines.h"

namespace emstatus::host {
namespace {

/// Far more than a module can ask in one scan that anyone waits for.
constexpr std::size_t kMostEntries = std::size_t{1} << 20;
constexpr std::size_t kLargestScan = std::size_t{64} << 20;

}  // namespace

RecordingReader::RecordingReader(const std::string& path) : lines_(path) {
  std::string line;
  if (!lines_.Next(line)) {
    throw std::runtime_error(path + ": this is no recording of emhost record: it " +
                             (lines_.IsCut() ? "ends within the first line" : "is empty"));
  }
  header_ = ReadHeaderLine(line, lines_.Place());
}

std::optional<RecordedScan> RecordingReader::Next() {
  RecordedScan scan;
  std::string line;
  std::size_t entries = 0;
  std::size_t size = 0;
  while (!cut_ && lines_.Next(line)) {
    const LineKind kind = ReadScanLine(line, lines_.Place(), scan);
    size += line.size();
    if (++entries > kMostEntries || size > kLargestScan) {
      throw std::runtime_error(lines_.Place() + ": a scan is larger than any recording's");
    }
    if (kind == LineKind::End) {
      if (lines_.Next(line)) {
        throw std::runtime_error(lines_.Place() + ": expected nothing behind the end");
      }
      return std::nullopt;
    }
    if (kind == LineKind::Scan) {
      if (scan.number != ++scans_) {
        throw std::runtime_error(lines_.Place() + ": expected scan " + std::to_string(scans_) + ", found " +
                                 std::to_string(scan.number));
      }
      return scan;
    }
  }
  cut_ = true;
  return std::nullopt;
}

RecordingExtent CheckRecording(const std::string& path) {
  RecordingReader reader(path);
  RecordingExtent extent;
  while (const auto scan = reader.Next()) {
    extent.scans = scan->number;
  }
  extent.cut = reader.IsCut();
  if (extent.scans == 0) {
    throw std::runtime_error(path + ": the recording ends before its first scan");
  }
  return extent;
}

}  // namespace emstatus::host
