#include <gtest/gtest.h>

#include <cerrno>

#include "host/providers/HwmonJudge.h"
#include "tests/host/providers/MachineFolder.h"

namespace emstatus::test {
namespace {

using namespace host;

using Items = std::vector<std::pair<std::string, std::string>>;

constexpr HwmonMemory::Clock::time_point kBegin{std::chrono::hours(1)};

// One channel that is judged again and again; a text "!5" is a read that fails with errno 5.
class Channel {
 public:
  explicit Channel(const std::string& name) {
    const HwmonChannels channels = ChannelsIn({name + "_input", name + "_alarm"});
    EXPECT_EQ(channels.size(), 1u) << name;
    key_ = channels.begin()->first;
  }

  std::string Judge(const Items& items, int second = 0) {
    HwmonValues values;
    for (const auto& [item, text] : items) {
      values[item] = text.starts_with('!') ? FileResult<std::string>{"", std::stoi(text.substr(1))}
                                           : FileResult<std::string>{text, 0};
    }
    auto reading = JudgeChannel(key_, values, memory_, kBegin + std::chrono::seconds(second));
    if (!reading) {
      return "gone";
    }
    reading->name = reading->id = key_.Text();
    return Lines({*reading}).front();
  }

 private:
  HwmonChannelKey key_;
  HwmonMemory memory_;
};

TEST(HwmonChannel, Temperatures) {
  const struct {
    Items items;
    const char* line;
  } rows[] = {
      {{{"input", "45000"}}, "temp1 good 45.0 °C"},
      {{{"input", "80000"}, {"max", "80000"}, {"crit", "95000"}},
       "temp1 warning 80.0 °C: 80.0 °C, less than 80.0 °C expected"},
      {{{"input", "96000"}, {"max", "80000"}, {"crit", "95000"}},
       "temp1 critical 96.0 °C: 96.0 °C, less than 95.0 °C expected"},
      {{{"input", "50000"}, {"crit", "95000"}, {"crit_alarm", "1"}},
       "temp1 critical 50.0 °C: temp1_crit_alarm was set, 50.0 °C now, less than 95.0 °C expected"},
      {{{"input", "-5000"}, {"min", "0"}}, "temp1 warning -5.0 °C: -5.0 °C, at least 0.0 °C expected"},
      {{{"input", "101000"}, {"max", "75000"}, {"emergency", "100000"}},
       "temp1 critical 101.0 °C: 101.0 °C, less than 100.0 °C expected"},
      {{{"input", "115000"}, {"max", "120000"}, {"crit", "110000"}},
       "temp1 critical 115.0 °C: 115.0 °C, less than 110.0 °C expected"},
      {{{"input", "60000"}, {"max", "120000"}, {"max_alarm", "1"}, {"crit", "110000"}}, "temp1 good 60.0 °C"},
      {{{"input", "40850"}, {"max", "65261850"}, {"min", "-273150"}}, "temp1 good 40.9 °C"},
      {{{"input", "40000"}, {"max", "0"}, {"crit", "0"}, {"max_alarm", "1"}}, "temp1 good 40.0 °C"},
      {{{"input", "-5000"}, {"min", "0"}, {"max", "0"}, {"min_alarm", "1"}}, "temp1 good -5.0 °C"},
      {{{"input", "40000"}, {"max", "!5"}}, "temp1 good 40.0 °C"},
      {{{"input", "-44000"}}, "temp1 implausible: -44.0 °C, between -40.0 °C and 150.0 °C possible"},
      {{{"input", "-128000"}, {"min", "0"}},
       "temp1 implausible: -128.0 °C, between -40.0 °C and 150.0 °C possible"},
      {{{"input", "n/a"}}, "temp1 implausible: temp1_input reads \"n/a\", a number expected"},
      {{{"input", ""}}, "temp1 implausible: temp1_input reads \"\", a number expected"},
      {{{"input", "45000"}, {"fault", "1"}},
       "temp1 sensor-fault: the chip says that the sensor is broken or not connected (temp1_fault is 1)"},
      {{{"input", "0"}, {"enable", "0"}, {"fault", "1"}}, "temp1 inactive: switched off (temp1_enable is 0)"},
      {{{"input", "!5"}, {"alarm", "0"}},
       "temp1 sensor-fault: cannot be read: temp1_input: Input/output error"},
      {{{"input", "!6"}}, "temp1 sensor-fault: cannot be read: temp1_input: No such device or address"},
      {{{"input", "!61"}}, "temp1 inactive: no value now: temp1_input: No data available"},
      {{{"input", "!11"}}, "temp1 late: cannot be read: temp1_input: Resource temporarily unavailable"},
      {{{"input", "!2"}, {"alarm", "0"}}, "gone"},
      {{{"alarm", "0"}}, "temp1 good"},
      {{{"crit_alarm", "1"}}, "temp1 critical: temp1_crit_alarm is set"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Channel("temp1").Judge(row.items), row.line);
  }
}

TEST(HwmonChannel, VoltagesCurrentsPowerHumidity) {
  const struct {
    const char* name;
    Items items;
    const char* line;
  } rows[] = {
      {"in0", {{"input", "12100"}, {"min", "11400"}, {"max", "12600"}, {"alarm", "0"}}, "in0 good 12.100 V"},
      {"in0",
       {{"input", "13000"}, {"min", "11400"}, {"max", "12600"}, {"alarm", "1"}},
       "in0 warning 13.000 V: 13.000 V, less than 12.600 V expected"},
      {"in0",
       {{"input", "12000"}, {"min", "11400"}, {"max", "12600"}, {"alarm", "1"}},
       "in0 warning 12.000 V: in0_alarm was set, 12.000 V now"},
      {"in1",
       {{"input", "1000"}, {"min", "0"}, {"max", "0"}, {"alarm", "1"}},
       "in1 good 1.000 V: in1_alarm is ignored: its limits were never set"},
      {"in1", {{"input", "-12100"}, {"min", "-13200"}, {"max", "-10800"}}, "in1 good -12.100 V"},
      {"in1",
       {{"input", "-10000"}, {"min", "-13200"}, {"max", "-10800"}},
       "in1 warning -10.000 V: -10.000 V, less than -10.800 V expected"},
      {"in2",
       {{"input", "3300"}, {"lcrit", "3400"}},
       "in2 critical 3.300 V: 3.300 V, at least 3.400 V expected"},
      {"in2", {{"input", "3300"}, {"min", "3100"}, {"max", "0"}}, "in2 good 3.300 V"},
      {"curr1",
       {{"input", "21000"}, {"max", "20000"}},
       "curr1 warning 21.00 A: 21.00 A, less than 20.00 A expected"},
      {"power1",
       {{"input", "4294967295"}},
       "power1 implausible: 4295.0 W is what a device gives that has no value (4294967295)"},
      {"power1",
       {{"input", "4294967295000"}},
       "power1 implausible: 4294967.3 W is what a device gives that has no value (4294967295000)"},
      {"power1", {{"average", "350000000"}, {"cap", "300000000"}}, "power1 good 350.0 W"},
      {"power1",
       {{"average", "350000000"}, {"cap", "300000000"}, {"cap_alarm", "1"}},
       "power1 warning 350.0 W: power1_cap_alarm was set, 350.0 W now, less than 300.0 W expected"},
      {"humidity1",
       {{"input", "101000"}},
       "humidity1 implausible: 101.0 %, between 0.0 % and 100.0 % possible"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Channel(row.name).Judge(row.items), row.line);
  }
}

TEST(HwmonChannel, Fans) {
  const struct {
    Items items;
    const char* line;
  } rows[] = {
      {{{"input", "0"}, {"min", "2160"}}, "fan1 critical 0 RPM: 0 RPM, at least 2160 RPM expected"},
      {{{"input", "0"}, {"min", "600"}, {"alarm", "1"}},
       "fan1 critical 0 RPM: 0 RPM, at least 600 RPM expected"},
      {{{"input", "0"}, {"target", "1500"}}, "fan1 critical 0 RPM: 0 RPM, 1500 RPM expected, its target"},
      {{{"input", "0"}, {"alarm", "1"}}, "fan1 critical 0 RPM: fan1_alarm was set, 0 RPM now"},
      {{{"input", "420"}, {"min", "600"}}, "fan1 warning 420 RPM: 420 RPM, at least 600 RPM expected"},
      {{{"input", "420"}, {"min", "600"}, {"alarm", "0"}},
       "fan1 warning 420 RPM: 420 RPM, at least 600 RPM expected; fan1_alarm reads 0 all the same: does another program "
       "read the alarms away?"},
      {{{"input", "0"}},
       "fan1 inactive: 0 RPM: no minimum is set and it has never turned; no fan connected?"},
      {{{"input", "0"}, {"min", "0"}, {"alarm", "1"}},
       "fan1 inactive: 0 RPM: no minimum is set and it has never turned; no fan connected?"},
      {{{"input", "65535"}}, "fan1 implausible: 65535 RPM is what a device gives that has no value (65535)"},
      {{{"input", "-1"}}, "fan1 implausible: -1 RPM, between 0 RPM and 50000 RPM possible"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(Channel("fan1").Judge(row.items), row.line);
  }
  Channel fan("fan1");
  EXPECT_EQ(fan.Judge({{"input", "900"}}), "fan1 good 900 RPM");
  EXPECT_EQ(fan.Judge({{"input", "0"}}, 5),
            "fan1 warning 0 RPM: 0 RPM, though it has turned before; no minimum is set");
  EXPECT_EQ(fan.Judge({{"input", "0"}, {"pwm", "0"}}, 10),
            "fan1 inactive: 0 RPM: stopped by its control, and no minimum is set");
}

TEST(HwmonChannel, ClearsAtTheHysteresis) {
  Channel temperature("temp1");
  const auto at = [&](const char* input) {
    return temperature.Judge({{"input", input}, {"max", "80000"}, {"max_hyst", "75000"}}).substr(6, 4);
  };
  for (const auto& [input, state] : {std::pair{"76000", "good"},
                                     {"80000", "warn"},
                                     {"76000", "warn"},
                                     {"75000", "good"},
                                     {"79000", "good"}}) {
    EXPECT_EQ(at(input), state) << input;
  }
  EXPECT_EQ(Channel("temp1").Judge({{"input", "81000"}, {"max", "80000"}, {"max_hyst", "127000"}}),
            "temp1 warning 81.0 °C: 81.0 °C, less than 80.0 °C expected")
      << "a hysteresis beyond its limit is none";
}

TEST(HwmonChannel, AlarmsThatClearWhenReadAreHeld) {
  Channel voltage("in0");
  const auto at = [&](int second, const char* alarm) {
    return voltage.Judge({{"input", "1000"}, {"min", "900"}, {"max", "1100"}, {"alarm", alarm}}, second);
  };
  EXPECT_EQ(at(0, "0"), "in0 good 1.000 V");
  EXPECT_EQ(at(5, "1"), "in0 warning 1.000 V: in0_alarm was set, 1.000 V now");
  EXPECT_EQ(at(64, "0"), "in0 warning 1.000 V: in0_alarm was set 59 s ago, 1.000 V now");
  EXPECT_EQ(at(65, "0"), "in0 good 1.000 V");
}

TEST(HwmonChannel, AnIntrusionAlarmCountsOnceItWasSeenClear) {
  Channel contact("intrusion0");
  EXPECT_EQ(
      contact.Judge({{"alarm", "1"}}),
      "intrusion0 inactive: the alarm was set before reading began, as it is after power-up; confirm it to arm "
      "the contact");
  EXPECT_EQ(contact.Judge({{"alarm", "0"}}), "intrusion0 good");
  EXPECT_EQ(contact.Judge({{"alarm", "1"}}),
            "intrusion0 warning: the chassis was opened; the alarm stays until it is confirmed");
  EXPECT_EQ(contact.Judge({{"alarm", "!5"}}),
            "intrusion0 sensor-fault: cannot be read: intrusion0_alarm: Input/output error");
}

TEST(HwmonChannels, OnlyWhatCanBeTold) {
  std::vector<std::string> names;
  for (const auto& [key, items] :
       ChannelsIn({"name", "temp1_input", "temp1_max", "temp10_fault", "in0_alarm", "fan2_min", "fan2_div",
                   "pwm1", "pwm1_enable", "bogus1_input", "energy1_input", "temp_input", "tempx_input",
                   "temp1", "power1_cap", "power2_average", "intrusion0_alarm", "temp3_label", "uevent"})) {
    names.push_back(key.Text());
  }
  EXPECT_EQ(names, (Texts{"temp1", "temp10", "in0", "power2", "intrusion0"}));
}

}  // namespace
}  // namespace emstatus::test
