#include "config/Placeholders.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace emstatus::test {
namespace {

TEST(PlaceholdersTest, ExpandsTheEnvironment) {
  setenv("EM_HOME", "/root", 1);
  setenv("EM_LONG", std::string(300, 'x').c_str(), 1);
  unsetenv("EM_UNSET");
  const struct {
    std::string text;
    std::string expected;
  } rows[] = {
      {"", ""},
      {"plain", "plain"},
      {"%EM_HOME%/x", "/root/x"},
      {"a%EM_UNSET%x", "ax"},
      {"a%%b", "ab"},
      {"100%", "100%"},
      {"50% of %EM_HOME%", "50% of /root"},
      {"%EM-HOME%", "%EM-HOME%"},
      {"%a b%EM_HOME%", "%a b/root"},
      // Without a placeholder nothing is cut, with one everything after 259 characters.
      {std::string(300, 'a'), std::string(300, 'a')},
      {"%EM_LONG%", std::string(259, 'x')},
      {std::string(258, 'a') + "%EM_HOME%b", std::string(258, 'a') + "/"},
      {std::string(260, 'a') + "%EM_HOME%", std::string(260, 'a') + "%EM_HOME%"},
  };
  for (const auto& row : rows) EXPECT_EQ(ExpandEnvironment(row.text), row.expected) << row.text;
}

TEST(PlaceholdersTest, ExpandsVariables) {
  const ConfigVariables variables = {{"A", "x"}, {"A_1", "y"}, {"P", "%A%"}};
  const struct {
    const char* text;
    const char* expected;
  } rows[] = {
      {"%A%%B%", "x"}, {"%A_1%-%A%", "y-x"}, {"%%", "%"},        {"100%%", "100%"}, {"end%", "end%"},
      {"%A", "%A"},    {"%A-%A%", "%A-x"},   {"%P%", "%A%"},     {"% A%", "% A%"},  {"%%A%%", "%A%"},
      {"", ""},        {"%%%A%", "%x"},      {"%A\t%", "%A\t%"},
  };
  for (const auto& row : rows) EXPECT_EQ(ExpandVariables(row.text, variables), row.expected) << row.text;
}

}  // namespace
}  // namespace emstatus::test
