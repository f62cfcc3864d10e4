#pragma once

#include <string>

#include "host/recording/RecordedScan.h"

/// The text form of a recording: lines of JSON. docs/HOST.md describes them. [any thread]
namespace emstatus::host {

/// The first line, with its line end.
std::string HeaderLine(const RecordingHeader& header);

/// Throws a std::runtime_error that names `place` and says what was expected when this is no first line of a
/// recording, or that of one of another version.
RecordingHeader ReadHeaderLine(const std::string& line, const std::string& place);

/// The lines of a scan: what it changed, and then the line of the scan itself.
std::string ScanLines(const RecordedScan& scan);

/// The last line of a recording that was ended and not interrupted.
std::string EndLine();

enum class LineKind { Entry, Scan, End };

/// Adds what one line says to `scan`. Throws as ReadHeaderLine() does.
LineKind ReadScanLine(const std::string& line, const std::string& place, RecordedScan& scan);

}  // namespace emstatus::host
