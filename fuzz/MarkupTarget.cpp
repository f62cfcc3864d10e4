// Markup: what is read can be written, and reads as the same tree again; what can be written reads back.
// The input is a document.

#include <algorithm>

#include "fuzz/Check.h"
#include "markup/MarkupReader.h"
#include "markup/MarkupWriter.h"

namespace emstatus::fuzz {
namespace {

/// Bytes that one byte of a document can become: a byte of windows-1252 has up to three in UTF-8.
constexpr std::size_t kMostGrowth = 3;

struct Size {
  std::size_t depth = 0;
  std::size_t bytes = 0;
  std::size_t nodes = 0;
};

void Measure(const Element& element, std::size_t depth, Size& size) {
  size.depth = std::max(size.depth, depth);
  size.bytes += element.name.size() + element.text.size() + element.tail.size();
  size.nodes += 1 + element.attributes.size();
  for (const MarkupAttribute& attribute : element.attributes) {
    size.bytes += attribute.name.size() + attribute.value.size();
  }
  for (const Element& child : element.children) Measure(child, depth + 1, size);
}

void CheckWritten(const Element& root) {
  const std::string written = WriteMarkup(root);
  EM_FUZZ_CHECK(!written.empty());
  const auto again = ReadMarkup(written);
  EM_FUZZ_CHECK(again && *again == root);
  EM_FUZZ_CHECK(WriteMarkup(*again) == written);
}

void CheckDocument(std::string_view bytes, const Element& root) {
  Size size;
  Measure(root, 1, size);
  EM_FUZZ_CHECK(size.depth <= kDeepestMarkup);
  EM_FUZZ_CHECK(size.bytes <= kMostGrowth * bytes.size() && size.nodes <= bytes.size());
  EM_FUZZ_CHECK(!root.name.empty() && root.tail.empty());
  CheckWritten(root);
}

void CheckError(std::string_view bytes, const MarkupError& error) {
  // Every line end, or one more, and no further than the text goes.
  const auto ends =
      static_cast<std::size_t>(std::ranges::count_if(bytes, [](char c) { return c == '\n' || c == '\r'; }));
  EM_FUZZ_CHECK(error.line >= 1 && error.line <= ends + 1);
  EM_FUZZ_CHECK(error.column >= 1 && error.column <= bytes.size() + 1);
  EM_FUZZ_CHECK(!error.message.empty());
}

/// Any text can be written as text and as an attribute unless no document can hold it.
void CheckText(std::string_view bytes) {
  Element child{.name = "c", .attributes = {}, .text = {}, .children = {}, .tail = std::string(bytes)};
  const Element root{.name = "e",
                     .attributes = {{"a", std::string(bytes)}},
                     .text = std::string(bytes),
                     .children = {child},
                     .tail = {}};
  if (!WriteMarkup(root).empty()) CheckWritten(root);
}

}  // namespace
}  // namespace emstatus::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace emstatus::fuzz;
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto document = emstatus::ReadMarkup(bytes);
  if (document) {
    CheckDocument(bytes, *document);
  } else {
    CheckError(bytes, document.Error());
  }
  CheckText(bytes);
  return 0;
}
