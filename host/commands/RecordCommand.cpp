#include "host/commands/RecordCommand.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "host/commands/HostOptions.h"
#include "host/commands/ProgramVersion.h"
#include "host/commands/RunCompanion.h"
#include "host/recording/RecordingWriter.h"
#include "host/recording/TrafficLog.h"
#include "host/simulation/SimulateArguments.h"

namespace emstatus::host {
namespace {

struct RecordOptions {
  HostOptions host;
  std::string file;
  bool force = false;
  bool json = false;
  std::string duration = "ever";
  std::optional<std::uint64_t> scans;
};

/// The recording of a run, and what is told about it.
class Recording {
 public:
  explicit Recording(const RecordOptions& options)
      : options_(options),
        path_(std::filesystem::absolute(options.file).lexically_normal()),
        writer_(path_, options.force) {}

  void Begin() {
    RecordingHeader header = log_.Header();
    header.version = ProgramVersion();
    writer_.Write(header);
    begun_ = true;
  }

  /// Writes the scan that has ended; false when it was the last one wanted.
  bool WriteScan() {
    if (const auto scan = log_.Take()) {
      writer_.Write(*scan);
    }
    return !options_.scans || writer_.Scans() < *options_.scans;
  }

  void End() {
    writer_.Close();
    std::error_code error;
    const auto size = std::filesystem::file_size(path_, error);
    std::cerr << "emhost: recorded " << writer_.Scans() << (writer_.Scans() == 1 ? " scan in " : " scans in ")
              << path_.string();
    if (!error) {
      std::cerr << " (" << size << " bytes)";
    }
    std::cerr << std::endl;
  }

  /// After a failure: leaves no file that holds nothing, and tells what the file does hold.
  void Abandon() {
    std::error_code ignored;
    // A device may be written to, but is nobody's to remove.
    if (!begun_ && is_regular_file(std::filesystem::symlink_status(path_, ignored))) {
      std::filesystem::remove(path_, ignored);
    } else if (writer_.Scans() != 0) {
      std::cerr << "emhost: the recording ends after scan " << writer_.Scans() << "; it replays up to there."
                << std::endl;
    }
  }

  TrafficLog& Log() { return log_; }

 private:
  const RecordOptions& options_;
  const std::filesystem::path path_;
  RecordingWriter writer_;
  TrafficLog log_;
  bool begun_ = false;
};

int Record(const RecordOptions& options) {
  RunCompanion companion;
  companion.limit = ParseDuration(options.duration);
  Recording recording(options);
  companion.traffic = &recording.Log();
  companion.started = [&] { recording.Begin(); };
  companion.scanEnds = [&] { return recording.WriteScan(); };
  try {
    const int code = RunAccompanied(options.host, options.json, companion);
    recording.End();
    return code;
  } catch (const std::exception&) {
    recording.Abandon();
    throw;
  }
}

}  // namespace

std::function<int()> SetUpRecordCommand(CLI::App& command) {
  const auto options = std::make_shared<RecordOptions>();
  command.add_option("file", options->file, "The recording; .emrec.gz is a good ending")
      ->type_name("FILE")
      ->required();
  command.add_flag("--force", options->force, "Write over a file that is there already");
  command.add_option("--for", options->duration, "How long: 90s, 10m, 2h, or ever")
      ->type_name("TIME")
      ->capture_default_str();
  command.add_option("--scans", options->scans, "How many scans")
      ->check(CLI::PositiveNumber.description(""))
      ->type_name("N");
  command.add_flag("--json", options->json, "For programs: the tree, and each event as a line, as JSON");
  AddHostOptions(command, options->host);
  command.footer(
      "Examples:\n"
      "  emhost record fault.emrec.gz                  until Ctrl-C\n"
      "  emhost record fault.emrec.gz --for 2h         for two hours\n"
      "  emhost record fault.emrec.gz --scans 1        one scan\n"
      "  zcat fault.emrec.gz | less                    what it holds: the configuration, and lines of JSON\n"
      "Exit code: 0 recorded, 3 failed. An interrupted recording replays up to its last scan.");
  return [options] { return Record(*options); };
}

}  // namespace emstatus::host
