#include "process/SystemLogMessage.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace emstatus::test {
namespace {

__attribute__((format(printf, 1, 2))) std::string Format(const char* format, ...) {
  struct {
    char text[kSystemLogMessageSize];
    char guard = '#';
  } room;
  std::memset(room.text, '?', sizeof room.text);
  va_list arguments;
  va_start(arguments, format);
  const std::size_t length = FormatSystemLogMessage(room.text, format, arguments);
  va_end(arguments);
  EXPECT_EQ(room.guard, '#');
  EXPECT_EQ(length, strnlen(room.text, sizeof room.text));
  return room.text;
}

TEST(SystemLogMessage, LeavesOutLeadingLineFeedsOfTheFormatOnly) {
  EXPECT_EQ(Format("\n\nEM_STATUS : %d of %s", 3, "4"), "EM_STATUS : 3 of 4");
  EXPECT_EQ(Format("plain\n\n"), "plain\n\n");
  EXPECT_EQ(Format("\n%s", "\nargument"), "\nargument");
  EXPECT_EQ(Format(" \nblank first"), " \nblank first");
  EXPECT_EQ(Format("\n\n\n"), "\n\n\n");
  EXPECT_EQ(Format("%s", ""), "");
}

TEST(SystemLogMessage, CutsLongTexts) {
  const std::string fits(1023, 'x');
  EXPECT_EQ(Format("\n%s", fits.c_str()), fits);
  EXPECT_EQ(Format("%s%c", fits.c_str(), 'y'), fits);
  EXPECT_EQ(Format("%s", std::string(5000, 'x').c_str()), fits);
}

TEST(SystemLogMessage, SaysSoWhenItCannotFormat) {
  const wchar_t unpaired[] = {static_cast<wchar_t>(0xD800), 0};
  EXPECT_EQ(Format("\nbefore %ls", unpaired), "ERROR: cann't format message");
}

TEST(SystemLogMessage, SignsWithTheProgramsShortName) {
  EXPECT_STREQ(ProgramShortName(), "test_process");
}

}  // namespace
}  // namespace emstatus::test
