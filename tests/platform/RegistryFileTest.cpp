#include "platform/RegistryFile.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/TraceCapture.h"
#include "tests/support/TraceLevel.h"

namespace emstatus::test {
namespace {

TEST(RegistryFile, ReadsWhatItWrites) {
  const std::string text =
      "[HKEY_LOCAL_MACHINE]\n"
      "=s=no name\n"
      "binary=b=0a ff \n"
      "empty=s=\n"
      "expand=es=%ROOT%/x = y [z]\n"
      "none=b=\n"
      "number=d=-2147483648\n"
      "x=s=a value named as a key\n"
      "[SOFTWARE]\n"
      "[Vendor Name]\n"
      "a=s=1\n"
      "\n"
      "\n"
      "[x]\n"
      "\n"
      "\n"
      "[HKEY_USERS]\n"
      "\n"
      "\n";
  CRegistryNode top;
  ReadRegistryText(text, top);
  EXPECT_EQ(WriteRegistryText(top), text);
}

TEST(RegistryFile, ReadsLines) {
  const std::string x(1021, 'x');
  const struct {
    const char* what;
    std::string text;
    std::string written;
    std::size_t count;
  } rows[] = {
      {"an empty file", "", "\n", 0},
      {"an empty line first", "\na=s=1\n", "\n", 0},
      {"nothing after the top's end", "[k]\n\n\na=s=1\n", "[k]\n\n\n", 1},
      {"an end without empty lines or line feed", "[k]\na=s=1", "[k]\na=s=1\n\n\n", 2},
      {"the last of equal names", "a=s=1\na=d=2\n", "a=d=2\n\n", 2},
      {"values behind a key", "[k]\n\nb=s=2\na=s=1\n", "a=s=1\nb=s=2\n[k]\n\n\n", 3},
      {"equal keys are one", "[k]\na=s=1\n\n[k]\nb=s=2\n", "[k]\na=s=1\nb=s=2\n\n\n", 4},
      {"numbers", "a=d= 7x\nb=d=4294967295\nc=d=\nd=d=-\n", "a=d=7\nb=d=-1\n\n", 2},
      {"binary", "a=b=0a ff \nb=b=A 1ff zz 01\nc=b=\nd=b=0x10", "a=b=0a ff \nb=b=0a ff \nc=b=\nd=b=10 \n\n",
       4},
      {"other lines", "plain\na=\nb=s\nc=x=1\nd=S=1\ne=ess=1\n[f\ng]\n", "\n", 0},
      {"text behind a key's name", "[k]a=s=1]\n\n", "[k]\n\n\n", 1},
      {"a bracket in a value's name", "[a=s=1\n", "[a=s=1\n\n", 1},
      {"carriage returns", "[k]\r\na=s=1\r\n\r\nb=s=2\r\n", "[k]\na=s=1\r\nb=s=2\r\n\n\n", 3},
      {"zero bytes", std::string("a=s=1\0x\n\0\nb=s=2\n", 16), "a=s=1\n\n", 1},
      {"1022 characters", "a=s=" + x.substr(3) + "\n", "a=s=" + x.substr(3) + "\n\n", 1},
      {"more fall apart", "a=s=" + x.substr(2) + "b=s=2\n", "b=s=2\n\n", 2},
  };
  for (const auto& row : rows) {
    CRegistryNode top;
    EXPECT_EQ(ReadRegistryText(row.text, top), row.count) << row.what;
    EXPECT_EQ(WriteRegistryText(top), row.written) << row.what;
  }
}

TEST(RegistryFile, LeavesOutWhatLiesTooDeep) {
  const TraceLevel level(1);
  Trace().Take();
  std::string text;
  for (int depth = 0; depth < 100000; ++depth) text += "[k]\n";
  text += "a=s=lost\n" + std::string(100000 - 64, '\n') + "b=s=kept\n";
  CRegistryNode top;
  EXPECT_EQ(ReadRegistryText(text, top), 65U);
  EXPECT_NE(WriteRegistryText(top).find("]\nb=s=kept\n\n"), std::string::npos);
  EXPECT_EQ(Trace().Take().size(), 1U);
}

}  // namespace
}  // namespace emstatus::test
