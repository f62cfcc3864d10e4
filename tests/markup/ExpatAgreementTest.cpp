#include <gtest/gtest.h>

#include "markup/MarkupReader.h"
#include "markup/MarkupWriter.h"
#include "tests/markup/DocumentMaker.h"
#include "tests/markup/ExpatReader.h"

namespace emstatus::test {
namespace {

/// Reads a document both ways; answers whether it is well-formed.
bool Compare(const std::string& document) {
  const std::optional<Element> expected = ReadWithExpat(document);
  const MarkupResult result = ReadMarkup(document);
  EXPECT_EQ(static_cast<bool>(result), expected.has_value())
      << (result ? "expat refuses it" : result.Error().message) << "\n"
      << document;
  if (!result || !expected) return expected.has_value();
  EXPECT_EQ(*result, *expected) << document;
  const std::string written = WriteMarkup(*result);
  EXPECT_EQ(ReadWithExpat(written), expected) << written;
  const MarkupResult again = ReadMarkup(written);
  EXPECT_TRUE(again && *again == *result) << written;
  return true;
}

TEST(ExpatAgreement, OnWellFormedDocuments) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    EXPECT_TRUE(Compare(DocumentMaker(seed).Document())) << "expat refuses document " << seed;
  }
}

TEST(ExpatAgreement, OnSpoiledDocuments) {
  int wellFormed = 0;
  for (unsigned seed = 0; seed < 800; ++seed)
    wellFormed += Compare(DocumentMaker(seed).SpoiledDocument()) ? 1 : 0;
  EXPECT_GT(wellFormed, 20);
  EXPECT_LT(wellFormed, 400);
}

}  // namespace
}  // namespace emstatus::test
