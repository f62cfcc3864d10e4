#include "markup/MarkupWriter.h"

#include <gtest/gtest.h>

#include "markup/MarkupReader.h"

namespace emstatus::test {
namespace {

// Well-formed documents are written and read again by the agreement test; here is what no document can say.
TEST(MarkupWriter, RefusesWhatNoDocumentCanHold) {
  Element deep{"a", {}, {}, {}, {}};
  for (std::size_t i = 0; i < kDeepestMarkup; ++i) deep = {"a", {}, {}, {deep}, {}};
  const Element rows[] = {
      {"", {}, {}, {}, {}},
      {"a b", {}, {}, {}, {}},
      {"1", {}, {}, {}, {}},
      {"a", {{"", "x"}}, {}, {}, {}},
      {"a", {{"x", "1"}, {"y", ""}, {"x", "2"}}, {}, {}, {}},
      {"a", {{"x", "\xFF"}}, {}, {}, {}},
      {"a", {}, "\x01", {}, {}},
      {"a", {}, std::string(1, '\0'), {}, {}},
      {"a", {}, "\xED\xA0\x80", {}, {}},
      {"a", {}, {}, {{"b", {}, {}, {}, "\xEF\xBF\xBF"}}, {}},
      {"a", {}, {}, {{"<", {}, {}, {}, {}}}, {}},
      deep,
  };
  for (const Element& row : rows) EXPECT_EQ(WriteMarkup(row), "") << row.name << row.text;
  EXPECT_NE(WriteMarkup(deep.children[0]), "");
}

}  // namespace
}  // namespace emstatus::test
