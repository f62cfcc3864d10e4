#pragma once

#include <cstdint>
#include <string>

#include "host/recording/GzipFile.h"
#include "host/recording/RecordedScan.h"

namespace emstatus::host {

/// Writes a recording. Whatever happens to the process, the file holds each scan that was written, and reads
/// up to the last of them. Each operation throws a std::runtime_error that names the file and says what is
/// wrong with it, or with the scan. [main thread]
class RecordingWriter {
 public:
  /// A file that is there already is only written over with `force`.
  RecordingWriter(const std::string& path, bool force) : path_(path), file_(path, force) {}

  /// To be called once, before the first scan.
  void Write(const RecordingHeader& header);
  void Write(const RecordedScan& scan);
  /// Marks the recording as ended and not interrupted.
  void Close();

  std::uint64_t Scans() const { return scans_; }

 private:
  void WriteLines(const std::string& lines);

  const std::string path_;
  GzipWriter file_;
  std::uint64_t scans_ = 0;
};

}  // namespace emstatus::host
