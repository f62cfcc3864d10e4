#include "markup/Characters.h"
#include "markup/MarkupReader.h"

#include <gtest/gtest.h>

#include "markup/MarkupWriter.h"

namespace emstatus::test {
namespace {

using namespace std::string_literals;

TEST(MarkupReader, KeepsWhatElementsSay) {
  // The document as the writer gives it back.
  const struct {
    std::string document;
    std::string_view written;
  } rows[] = {
      {"<a/>", "<a/>"},
      {"<a ></a >", "<a/>"},
      {"<CMD Context='TRIQ' OC=\"0x12\"><DATA Type=\"int\">010</DATA></CMD>",
       R"(<CMD Context="TRIQ" OC="0x12"><DATA Type="int">010</DATA></CMD>)"},
      {"<a x = '\"'\ty\n=\n\"'\"/>", R"(<a x="&quot;" y="'"/>)"},
      {"<a>1<b/>2<c>3</c> \n</a>", "<a>1<b/>2<c>3</c> \n</a>"},
      {"<a>1<!-- x -->2<?p x?>3<![CDATA[<4>]]>5</a>", "<a>123&lt;4&gt;5</a>"},
      {"<a>]]<![CDATA[]]]]><![CDATA[>]]></a>", "<a>]]]]&gt;</a>"},
      {"<a>&lt;&gt;&amp;&apos;&quot;&#65;&#x42;&#x000043;</a>", "<a>&lt;&gt;&amp;'\"ABC</a>"},
      {"<a x='&lt;&#38;'/>", R"(<a x="&lt;&amp;"/>)"},
      {"<a>\r\n\r\r\n&#13;</a>", "<a>\n\n\n&#13;</a>"},
      {"<a x='1\t2\r\n3\n4&#9;&#10;&#13;'/>", R"(<a x="1 2 3 4&#9;&#10;&#13;"/>)"},
      {" \n<?p?><!----><!DOCTYPE a ><!-- x --><a/><?p ?\?>\n<!--a-b-->\r", "<a/>"},
      {"<?xml version='1.0' encoding='utf-8' standalone='no' ?>\n<a/>", "<a/>"},
      {"<?xml\tversion = \"1.7\"?><a/>", "<a/>"},
      {"<!DOCTYPE a SYSTEM 'x<\">'><a/>", "<a/>"},
      {"<!DOCTYPE a PUBLIC \"-//X//Y 'z'\"\n''\t><a/>", "<a/>"},
      {"<_ \u00E9:\u4E2D-.1='\U0001F600'>\u00B0\u007F</_>",
       "<_ \u00E9:\u4E2D-.1=\"\U0001F600\">\u00B0\u007F</_>"},
      {"<xml-a/>", "<xml-a/>"},
  };
  for (const auto& row : rows) {
    const MarkupResult result = ReadMarkup(row.document);
    ASSERT_TRUE(result) << row.document << ": " << result.Error().message;
    EXPECT_EQ(WriteMarkup(*result), row.written) << row.document;
  }
}

TEST(MarkupReader, TellsWhereADocumentIsWrong) {
  const struct {
    std::string document;
    std::uint32_t line;
    std::uint32_t column;
    std::string_view message;
  } rows[] = {
      {"", 1, 1, "expected the root element, found the end of the document"},
      {"CMD", 1, 1, "expected the root element, found \"CMD\""},
      {"1234567890123456789\u00E9x", 1, 1, "element, found \"1234567890123456789\""},
      {"123456789012345678901", 1, 1, "element, found \"12345678901234567890\""},
      {"<", 1, 2, "expected a name, found the end of the document"},
      {"<1a/>", 1, 2, "expected a name"},
      {"< a/>", 1, 2, "expected a name"},
      {"<a", 1, 3, "expected white space, \">\" or \"/>\""},
      {"<a>", 1, 4, "expected \"</a>\", found the end of the document"},
      {"<a>\n\u00E9<b>x</a>", 2, 6, "expected \"</b>\", found \"</a>\""},
      {"<a></a ", 1, 8, "expected \">\""},
      {"<a></ a>", 1, 6, "expected a name"},
      {"<a/ >", 1, 3, "expected white space"},
      {"<a x/>", 1, 5, "expected \"=\""},
      {"<a x=1/>", 1, 6, "expected a value in quotes"},
      {"<a x='1/>", 1, 10, "expected ' at the end of the value"},
      {"<a x='<'/>", 1, 7, "expected ' at the end of the value"},
      {"<a x='1'y='2'/>", 1, 9, "expected white space"},
      {"<a x='1' y='2' x='3'/>", 1, 16, "expected an attribute of another name"},
      {"<a>&nbsp;</a>", 1, 4, "expected a standard entity, found \"&nbsp;</a>\""},
      {"<a>&LT;</a>", 1, 4, "expected a standard entity"},
      {"<a>& </a>", 1, 5, "expected a name"},
      {"<a>&lt </a>", 1, 7, "expected \";\""},
      {"<a>&#65</a>", 1, 8, "expected \";\""},
      {"<a>&#;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#x;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#X41;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#-5;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#0;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#x1F;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#xDFFF;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#xFFFE;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#x110000;</a>", 1, 4, "expected the number of a character"},
      {"<a>&#4294967361;</a>", 1, 4, "expected the number of a character"},
      {"<a>x]]></a>", 1, 5, "expected text without the end of a CDATA section"},
      {"<a><![CDATA[x]]</a>", 1, 20, "expected \"]]>\""},
      {"<a><![cdata[x]]></a>", 1, 5, "expected a name"},
      {"<a><!-- x -- y --></a>", 1, 13, "expected \">\""},
      {"<a><!-- x ---></a>", 1, 13, "expected \">\""},
      {"<a><?xml?></a>", 1, 6, "expected a target other than \"xml\""},
      {"<a><?XmL x?></a>", 1, 6, "expected a target other than \"xml\""},
      {"<a><?p/?></a>", 1, 7, "expected white space"},
      {"<a><?p x</a>", 1, 13, "expected \"?>\""},
      {"<a/><b/>", 1, 5, "expected the end of the document, found \"<b/>\""},
      {"<a/>x", 1, 5, "expected the end of the document"},
      {"<a/><![CDATA[]]>", 1, 5, "expected the end of the document"},
      {"<a/>&#32;", 1, 5, "expected the end of the document"},
      {" <?xml version='1.0'?><a/>", 1, 4, "expected a target other than \"xml\""},
      {"<?xml?><a/>", 1, 3, "expected a target other than \"xml\""},
      {"<?xml encoding='UTF-8'?><a/>", 1, 7, "expected \"version\""},
      {"<?xml version='2.0'?><a/>", 1, 15, "expected a version such as \"1.0\""},
      {"<?xml version='1.0'encoding='UTF-8'?><a/>", 1, 20, "expected \"?>\""},
      {"<?xml version='1.0' encoding=''?><a/>", 1, 30, "expected the name of an encoding"},
      {"<?xml version='1.0' standalone='maybe'?><a/>", 1, 32, "expected \"yes\" or \"no\""},
      {"<?xml version='1.0' standalone='no' encoding='UTF-8'?><a/>", 1, 37, "expected \"?>\""},
      {"<!DOCTYPE a [<!ENTITY b 'c'>]><a/>", 1, 13,
       "expected \">\" (a document type without declarations of its own)"},
      {"<!DOCTYPE a SYSTEM><a/>", 1, 19, "expected white space"},
      {"<!DOCTYPE a PUBLIC 'x'><a/>", 1, 23, "expected white space"},
      {"<!DOCTYPE a PUBLIC '{}' 'x'><a/>", 1, 20, "expected a public identifier"},
      {"<!DOCTYPE a other><a/>", 1, 13, "expected \"PUBLIC\", \"SYSTEM\" or \">\""},
      {"<!DOCTYPE a><!DOCTYPE a><a/>", 1, 14, "expected a name"},
      {"<!DOCTYPE a>", 1, 13, "expected the root element"},
      {"<a>\n\x01</a>", 2, 1, "found a character that no document may hold"},
      {"<a>\0</a>"s, 1, 4, "found a character that no document may hold"},
      {"<a>\r\n\xEF\xBF\xBE</a>", 2, 1, "found a character that no document may hold"},
      {"<a>\u00E9\xC0\x80</a>", 1, 5, "found bytes that the encoding does not have"},
      {"<a>\xED\xA0\x80</a>", 1, 4, "found bytes that the encoding does not have"},
      {"<a>\xF4\x90\x80\x80</a>", 1, 4, "found bytes that the encoding does not have"},
      {"<a/>\xE2\x82", 1, 5, "found bytes that the encoding does not have"},
      {"<\0a\0>\0x\0<\0/\0a\0>\0\n"s, 1, 9,
       "found bytes that the encoding does not have"},  // half a line feed
      {"<?xml version='1.0' encoding='KOI8-R'?><a/>", 1, 1,
       "expected the name of a known encoding, found \"KOI8-R\""},
      {"<?xml version='1.0' encoding='UTF-16'?><a/>", 1, 1,
       "expected the encoding that the document's first bytes show"},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='latin1'?><a/>", 1, 1, "expected the encoding that the"},
  };
  for (const auto& row : rows) {
    const MarkupResult result = ReadMarkup(row.document);
    ASSERT_FALSE(result) << row.document;
    const MarkupError& error = result.Error();
    EXPECT_TRUE(error.message.find(row.message) != std::string::npos)
        << row.document << ": " << error.message;
    EXPECT_EQ(std::pair(error.line, error.column), std::pair(row.line, row.column)) << row.document;
  }
}

TEST(MarkupReader, TurnsEveryEncodingIntoUtf8) {
  const auto declared = [](const char* encoding, const char* rest) {
    return "<?xml version='1.0' encoding='"s + encoding + "'?>" + rest;
  };
  const struct {
    std::string document;
    /// "" for an error.
    std::string_view text;
  } rows[] = {
      {"\xEF\xBB\xBF<a>\u20AC</a>", "\u20AC"},
      {declared("ISO-8859-1", "<a>\x80\xE9</a>"), "\u0080\u00E9"},
      {declared("iso_8859-1", "<a>\xFF</a>"), "\u00FF"},
      {declared("Windows-1252", "<a>\x80\x9F\xE9</a>"), "\u20AC\u0178\u00E9"},
      {declared("windows-1252", "<a>\x81</a>"), ""},
      {declared("US-ASCII", "<a>~</a>"), "~"},
      {declared("US-ASCII", "<a>\xE9</a>"), ""},
      {"<?xmlish encoding='ISO-8859-1'?><a>\u00E9</a>", "\u00E9"},
      {"<\0a\0>\0\xAC\x20=\xD8\x00\xDE<\0/\0a\0>\0"s, "\u20AC\U0001F600"},
      {"\xFF\xFE<\0a\0>\0x\0<\0/\0a\0>\0"s, "x"},
      {"\xFE\xFF\0<\0a\0>\0x\0<\0/\0a\0>"s, "x"},
      {"\0<\0a\0>\xD8\x3D\xDE\x00\0<\0/\0a\0>"s, "\U0001F600"},
      {"\0<\0a\0>\0x\0<\0/\0a\0>\0"s, ""},        // half a character at the end
      {"\0<\0a\0>\xD8\x3D\0x\0<\0/\0a\0>"s, ""},  // a surrogate without the other
      {"\0<\0a\0>\xDE\x00\0x\0<\0/\0a\0>"s, ""},  // the second one alone
      {"\xFF\xFE\0<\0a\0/\0>"s, ""},              // the mark of the other order
  };
  for (const auto& row : rows) {
    const MarkupResult result = ReadMarkup(row.document);
    EXPECT_EQ(result ? result->text : "", row.text) << row.document;
  }
}

// One bound of the tables that is off by one changes the sums.
TEST(MarkupCharacters, AreAsManyAsTheStandardHas) {
  int all = 0;
  int starts = 0;
  int inNames = 0;
  for (char32_t character = 0; character < 0x20000; ++character) {
    all += IsMarkupCharacter(character);
    starts += IsNameStart(character);
    inNames += IsNameCharacter(character);
  }
  EXPECT_EQ(all, 0x20000 - 29 - 0x800 - 2);
  EXPECT_EQ(starts, 119538);
  EXPECT_EQ(inNames, 119665);
  EXPECT_TRUE(IsNameStart(0xEFFFF) && !IsNameCharacter(0xF0000));
  EXPECT_TRUE(IsMarkupCharacter(0x10FFFF) && !IsMarkupCharacter(0x110000));
}

std::string Nested(std::size_t depth) {
  std::string open;
  std::string close;
  for (std::size_t i = 0; i < depth; ++i) {
    open += "<a>";
    close += "</a>";
  }
  return open + close;
}

TEST(MarkupReader, IsBounded) {
  EXPECT_TRUE(ReadMarkup(Nested(kDeepestMarkup)));
  EXPECT_EQ(ReadMarkup(Nested(kDeepestMarkup + 1)).Error().message.substr(0, 41),
            "expected fewer elements within each other");
  EXPECT_FALSE(ReadMarkup(Nested(100000)));
  const std::string atLimit = "<a>" + std::string(kLargestMarkup - 7, 'x') + "</a>";
  EXPECT_TRUE(ReadMarkup(atLimit));
  EXPECT_EQ(ReadMarkup(atLimit + " ").Error().message, "expected at most 1048576 bytes, found 1048577");
  std::string manyAttributes = "<a";
  while (manyAttributes.size() < kLargestMarkup - 20)
    manyAttributes += " k" + std::to_string(manyAttributes.size()) + "=''";
  EXPECT_TRUE(ReadMarkup(manyAttributes + "/>"));  // a reader that compares all pairs takes minutes
}

TEST(MarkupReader, ElementsAreAskedByName) {
  const MarkupResult result = ReadMarkup("<CMD Context='' OC='1'><X/><DATA>1</DATA><DATA>2</DATA></CMD>");
  ASSERT_TRUE(result);
  EXPECT_EQ(result->Attribute("OC"), "1");
  EXPECT_EQ(result->Attribute("oc"), "");
  EXPECT_NE(result->FindAttribute("Context"), nullptr);
  EXPECT_EQ(result->FindAttribute("OE"), nullptr);
  ASSERT_NE(result->Child("DATA"), nullptr);
  EXPECT_EQ(result->Child("DATA")->text, "1");
  EXPECT_EQ(result->Child("data"), nullptr);
}

}  // namespace
}  // namespace emstatus::test
