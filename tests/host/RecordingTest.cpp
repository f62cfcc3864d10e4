#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "host/recording/GzipFile.h"
#include "host/recording/ObjectJournal.h"
#include "host/recording/RecordedMachine.h"
#include "host/recording/RecordedText.h"
#include "host/recording/RecordingLines.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/RecordingWriter.h"
#include "host/recording/TrafficLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace emstatus::host {
namespace {

using std::chrono::milliseconds;

RecordedScan WholeScan(std::uint64_t number) {
  RecordedScan scan;
  scan.number = number;
  scan.begin = std::int64_t(number) * 1000;
  scan.took = 7;
  scan.led = 0x83;
  scan.systemStatus = 3;
  scan.asked = 2;
  scan.answers = {
      {{0x0102, 2, 1, 0, std::nullopt}, 0, Answer::Of("Fan \xFC"), 1001, 0},
      {{0x0601, 2, 0xFF00, 0, nlohmann::json("/var")}, 1, Answer::Refusal(AnswerStatus::Failed), 1002, 5000}};
  scan.events = {{{0x2322, 0x10002, 3, 1, nlohmann::json(2)}, 1006}};
  scan.wakeUps = {999};
  scan.simulation = RecordedSimulation{"[Config]\n"};
  scan.objects = {{{ObjectClass::Fan, 1, 0}, {{"Value", 12.5}, {"Reason", nullptr}}},
                  {{ObjectClass::Fan, 2, 0}, nullptr}};
  scan.tree = nlohmann::ordered_json::parse(R"({"Id": "root", "Desig": "S", "Children": []})");
  return scan;
}

RecordingHeader SomeHeader() {
  return {"1.2.3", 1795322124250, {1, 3}, {{"HOME", "/\xE9"}, {"UNSET", std::nullopt}}, "; \xFF\n[Info]\n",
          "x"};
}

TEST(Recording, EverythingComesBack) {
  const test::TemporaryDirectory folder;
  const std::string path = folder.File("r.gz");
  RecordedScan second = WholeScan(2);
  second.simulation = RecordedSimulation{};
  second.tree.reset();
  {
    RecordingWriter writer(path, false);
    writer.Write(SomeHeader());
    writer.Write(WholeScan(1));
    writer.Write(second);
    writer.Close();
  }
  RecordingReader reader(path);
  EXPECT_EQ(reader.Header(), SomeHeader());
  const auto first = reader.Next();
  ASSERT_TRUE(first);
  EXPECT_EQ(ScanLines(*first), ScanLines(WholeScan(1)));
  EXPECT_EQ(first->answers[0].answer.data, nlohmann::json("Fan \xFC")) << "bytes that are no UTF-8";
  EXPECT_EQ(first->answers[1].request.object, 0xFF00U);
  EXPECT_EQ(first->answers[1].occurrence, 1U);
  EXPECT_EQ(first->events[0].event.extension, 0x10002U);
  EXPECT_EQ(first->tree->dump(), R"({"Id":"root","Desig":"S","Children":[]})") << "the order of members";
  const auto last = reader.Next();
  ASSERT_TRUE(last && last->simulation);
  EXPECT_FALSE(last->simulation->text) << "the file was taken away";
  EXPECT_FALSE(reader.Next());
  EXPECT_FALSE(reader.IsCut());
  EXPECT_THROW(RecordingWriter(path, false), std::runtime_error) << "nothing is written over unasked";
}

TEST(Recording, TextsComeBackByteForByte) {
  for (const char* text : {"", "Lüfter", "a\xFF", "\xC3", "\xE2\x82"}) {
    EXPECT_EQ(OriginalValue(RecordedText(text)), text);
    EXPECT_NO_THROW(static_cast<void>(RecordedText(text).dump()));
  }
  EXPECT_EQ(OriginalValue(nlohmann::json::parse(R"({"bytes": "€"})")),
            nlohmann::json::parse(R"({"bytes": "€"})"));
}

/// Reads all of it. True when it was read to an end, cut or not; what it throws must be meant for people.
bool ReadsToAnEnd(const std::string& path, std::uint64_t& scans) {
  scans = 0;
  try {
    RecordingReader reader(path);
    while (reader.Next()) {
      ++scans;
    }
    return true;
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find(path), std::string::npos) << error.what();
    return false;
  }
}

TEST(Recording, DamageIsToldAndWhatIsWholeIsRead) {
  const test::TemporaryDirectory folder;
  std::string plain = HeaderLine(SomeHeader());
  std::vector<std::size_t> ends;
  {
    RecordingWriter writer(folder.File("r.gz"), false);
    writer.Write(SomeHeader());
    for (std::uint64_t number = 1; number <= 6; ++number) {
      writer.Write(WholeScan(number));
      plain += ScanLines(WholeScan(number));
      ends.push_back(std::filesystem::file_size(folder.File("r.gz")));
    }
    writer.Close();
  }
  const std::string whole = folder.Read("r.gz");
  std::uint64_t scans = 0;
  for (std::size_t size = 0; size < whole.size(); size += 5) {
    const std::string path = folder.Write("cut.gz", whole.substr(0, size));
    const auto written =
        std::uint64_t(std::ranges::count_if(ends, [&](std::size_t end) { return end <= size; }));
    if (ReadsToAnEnd(path, scans)) {
      EXPECT_GE(scans, written) << "a scan that was flushed is lost, cut at " << size;
    } else {
      EXPECT_EQ(written, 0U) << "cut at " << size;
    }
  }
  for (std::size_t at = 0; at < whole.size(); at += 3) {
    std::string broken = whole;
    broken[at] = static_cast<char>(broken[at] ^ (at % 2 == 0 ? 0x01 : 0xFF));
    static_cast<void>(ReadsToAnEnd(folder.Write("broken.gz", broken), scans));
    EXPECT_LE(scans, 6U);
  }
  for (std::size_t at = 0; at < plain.size(); at += 11) {
    std::string broken = plain;
    broken[at] = static_cast<char>(broken[at] ^ 0x07);
    static_cast<void>(ReadsToAnEnd(folder.Write("broken.txt", broken), scans));
  }
}

TEST(Recording, SaysWhatIsWrongWhere) {
  const test::TemporaryDirectory folder;
  const std::string header = HeaderLine(SomeHeader());
  const std::string scan = "{\"scan\":1,\"at\":0,\"took\":0,\"asked\":0,\"status\":0,\"led\":0}\n";
  const struct {
    std::string text;
    const char* message;
  } rows[] = {
      {"", "this is no recording of emhost record: it is empty"},
      {"[Info]\n", "line 1: this is no recording"},
      {"{}\n", "line 1: this is no recording"},
      {"{\"emhostRecording\":2}\n", "a recording of version 2; this emhost reads version 1"},
      {"{\"emhostRecording\":1}\n", "line 1: /: expected a member \"version\""},
      {header + "nonsense\n", "line 2: expected JSON"},
      {header + "[]\n", "line 2: /: expected an object"},
      {header + "{\"axe\":1}\n", "line 2: /: expected a line of a recording"},
      {header + "{\"ask\":\"01-02\",\"status\":0,\"at\":0}\n", "/ask: expected a request as OC-OI-OE-CA"},
      {header + "{\"object\":\"axe\",\"index\":0,\"cabinet\":0,\"is\":{}}\n", "/object: expected a class"},
      {header + scan + scan, "line 3: expected scan 2, found 1"},
      {header + scan + "{\"end\":true}\n{}\n", "line 4: expected nothing behind the end"},
      {header + std::string(100000, '['), "ends before its first scan"},
      {header + std::string(100000, '[') + "\n", "line 2: it is nested too deeply"},
      {header + "{\"tree\":" + std::string(std::size_t{17} << 20, ' ') + "{}}\n",
       "larger than any recording"},
  };
  for (const auto& row : rows) {
    const std::string path = folder.Write("r", row.text);
    try {
      CheckRecording(path);
      ADD_FAILURE() << "not told: " << row.message;
    } catch (const std::runtime_error& error) {
      EXPECT_NE(std::string(error.what()).find(row.message), std::string::npos) << error.what();
    }
  }
  EXPECT_THROW(CheckRecording(folder.Path()), std::runtime_error);
}

TEST(Recording, ABombIsNotUnpacked) {
  const test::TemporaryDirectory folder;
  const std::string path = folder.File("bomb.gz");
  const gzFile file = gzopen(path.c_str(), "wb9");
  const std::string zeros(std::size_t{1} << 20, '0');
  for (int megabyte = 0; megabyte < 256; ++megabyte) {
    gzwrite(file, zeros.data(), unsigned(zeros.size()));
  }
  gzclose(file);
  try {
    CheckRecording(path);
    ADD_FAILURE();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("larger than any recording"), std::string::npos) << error.what();
  }
}

TEST(TrafficLog, WhatIsAsItWasCostsNextToNothing) {
  const test::TemporaryDirectory folder;
  RecordedScan scan;
  std::uintmax_t before = 0;
  constexpr std::uint64_t kScans = 1000;
  RecordingWriter writer(folder.File("r.gz"), false);
  writer.Write(SomeHeader());
  for (std::uint64_t number = 1; number <= kScans; ++number) {
    scan.number = number;
    // Not quite regular, as clocks are.
    scan.begin = std::int64_t(number * 10'000 + number * number % 97);
    scan.took = std::int64_t(30 + number * 7 % 11);
    scan.asked = 145;
    writer.Write(scan);
    before = before == 0 ? std::filesystem::file_size(folder.File("r.gz")) : before;
  }
  EXPECT_LT(std::filesystem::file_size(folder.File("r.gz")) - before, 32 * kScans);
}

TEST(RecordedMachine, AnswersByScanAndOccurrence) {
  RecordedMachine machine({2});
  const Request state{0x0102, 2, 0, 0, std::nullopt};
  const Request name{0x0102, 3, 0, 0, std::nullopt};
  const Request withData{0x0601, 2, 0xFF00, 0, nlohmann::json("/var")};
  RecordedScan scan;
  scan.number = 1;
  scan.answers = {{state, 0, Answer::Of(0), 0, 0},
                  {name, 0, Answer::Of("Fan"), 0, 0},
                  {state, 1, Answer::Of(2), 0, 0},
                  {withData, 0, Answer::Of(1), 0, 0}};
  machine.Advance(scan);
  const auto ask = [&](const Request& request) { return machine.Ask(request, milliseconds(0)); };
  EXPECT_EQ(ask(withData), Answer::Of(1));
  EXPECT_EQ(ask(name), Answer::Of("Fan"));
  EXPECT_EQ(ask(state), Answer::Of(0));
  EXPECT_EQ(ask(state), Answer::Of(2));
  EXPECT_EQ(ask(state), Answer::Of(2)) << "more often than recorded";
  Request other = withData;
  other.data = "/srv";
  EXPECT_EQ(ask(other), Answer::Refusal(AnswerStatus::Failed));
  EXPECT_EQ(machine.TakeUnanswered().size(), 1U);

  RecordedScan next;
  next.number = 2;
  next.answers = {{state, 0, Answer::Of(1), 0, 0}};
  machine.Advance(next);
  EXPECT_EQ(ask(state), Answer::Of(1));
  EXPECT_EQ(ask(state), Answer::Of(2)) << "as in the scan before";
  EXPECT_EQ(ask(name), Answer::Of("Fan")) << "asked again later than recorded";
  EXPECT_TRUE(machine.TakeUnanswered().empty());
  EXPECT_EQ(machine.Asked(), 9U);
}

TEST(RecordedMachine, ObjectsFollowTheirChanges) {
  RecordedMachine machine({});
  const ObjectAddress fan{ObjectClass::Fan, 1, 0};
  RecordedScan scan;
  scan.objects = {
      {fan, nlohmann::json::parse(R"({"Class": "fan", "Index": 1, "Cabinet": 0, "Id": "f", "Name": "Fan",
    "Quality": "good", "Condition": "good", "Value": 900.0, "Unit": "RPM", "AgeSeconds": 0.5, "Reason": "x"})")}};
  machine.Advance(scan);
  scan.objects = {{fan, nlohmann::json::parse(R"({"Value": 850.0, "Reason": null, "AgeSeconds": 0.25})")}};
  machine.Advance(scan);
  const auto object = machine.Find(fan);
  ASSERT_TRUE(object);
  EXPECT_EQ(object->reading.measurement->value, 850.0);
  EXPECT_EQ(object->reading.reason, "");
  EXPECT_EQ(object->age, milliseconds(250));
  scan.objects = {{fan, nullptr}};
  machine.Advance(scan);
  EXPECT_FALSE(machine.Find(fan));
  scan.objects = {{fan, nlohmann::json::object({{"Value", "much"}})}};
  EXPECT_THROW(machine.Advance(scan), std::runtime_error);
}

}  // namespace
}  // namespace emstatus::host
