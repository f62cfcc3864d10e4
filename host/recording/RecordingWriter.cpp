#include "host/recording/RecordingWriter.h"

#include <algorithm>
#include <stdexcept>

#include "host/recording/RecordingLines.h"

namespace emstatus::host {

void RecordingWriter::WriteLines(const std::string& lines) {
  for (std::size_t begin = 0; begin < lines.size();) {
    const std::size_t end = std::min(lines.find('\n', begin), lines.size());
    if (end - begin > GzipLines::kLongestLine) {
      throw std::runtime_error("cannot record in " + path_ + ": the tree or an answer is larger than " +
                               std::to_string(GzipLines::kLongestLine >> 20) + " MiB");
    }
    begin = end + 1;
  }
  file_.Write(lines);
  file_.Flush();
}

void RecordingWriter::Write(const RecordingHeader& header) {
  WriteLines(HeaderLine(header));
}

void RecordingWriter::Write(const RecordedScan& scan) {
  WriteLines(ScanLines(scan));
  scans_ = scan.number;
}

void RecordingWriter::Close() {
  file_.Write(EndLine());
  file_.Close();
}

}  // namespace emstatus::host
