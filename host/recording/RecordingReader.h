#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "host/recording/GzipFile.h"
#include "host/recording/RecordedScan.h"

namespace emstatus::host {

/// Reads a recording, one scan at a time. Each operation throws a std::runtime_error that names file and line
/// and says what is wrong there. [one thread]
class RecordingReader {
 public:
  /// Reads the first line.
  explicit RecordingReader(const std::string& path);

  const RecordingHeader& Header() const { return header_; }

  /// The next scan that is there as a whole; nothing behind the last one.
  std::optional<RecordedScan> Next();

  /// The recording was interrupted, or its file was cut: it has no end. Known behind the last scan.
  bool IsCut() const { return cut_; }

 private:
  GzipLines lines_;
  RecordingHeader header_;
  std::uint64_t scans_ = 0;
  bool cut_ = false;
};

/// How much a recording holds.
struct RecordingExtent {
  std::uint64_t scans = 0;
  bool cut = false;
};

/// Reads all of it, so that what is wrong is told before anything is done with it. Throws as the reader does,
/// also for a recording without a single scan.
RecordingExtent CheckRecording(const std::string& path);

}  // namespace emstatus::host
