#include "tests/markup/ExpatReader.h"

#include <expat.h>

#include <memory>
#include <string_view>
#include <vector>

namespace emstatus::test {
namespace {

struct Building {
  XML_Parser parser;
  Element root;
  std::vector<Element*> open;

  void Refuse() { XML_StopParser(parser, XML_FALSE); }

  static Building& Of(void* data) { return *static_cast<Building*>(data); }
};

void OnStart(void* data, const char* name, const char** attributes) {
  Building& building = Building::Of(data);
  if (building.open.size() == kDeepestMarkup) return building.Refuse();
  Element* element = building.open.empty() ? &building.root : &building.open.back()->children.emplace_back();
  element->name = name;
  for (; *attributes != nullptr; attributes += 2)
    element->attributes.push_back({attributes[0], attributes[1]});
  building.open.push_back(element);
}

void OnEnd(void* data, const char*) {
  Building::Of(data).open.pop_back();
}

void OnText(void* data, const char* text, int length) {
  Element& element = *Building::Of(data).open.back();
  std::string& target = element.children.empty() ? element.text : element.children.back().tail;
  target.append(text, static_cast<std::size_t>(length));
}

void OnDocumentType(void* data, const char*, const char*, const char*, int hasInternalSubset) {
  if (hasInternalSubset != 0) Building::Of(data).Refuse();
}

void OnDeclaration(void* data, const char* version, const char*, int) {
  const std::string_view text = version != nullptr ? version : "";
  if (text.size() < 3 || !text.starts_with("1.") ||
      text.find_first_not_of("0123456789", 2) != std::string_view::npos) {
    Building::Of(data).Refuse();
  }
}

int OnUnknownEncoding(void*, const char* name, XML_Encoding* encoding) {
  if (std::string_view(name) != "windows-1252") return XML_STATUS_ERROR;
  constexpr int kUpper[32] = {0x20AC, -1,     0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                              0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, -1,     0x017D, -1,
                              -1,     0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                              0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, -1,     0x017E, 0x0178};
  for (int i = 0; i < 256; ++i) encoding->map[i] = i >= 0x80 && i < 0xA0 ? kUpper[i - 0x80] : i;
  return XML_STATUS_OK;
}

}  // namespace

std::optional<Element> ReadWithExpat(const std::string& bytes) {
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                            &XML_ParserFree);
  Building building{parser.get(), {}, {}};
  XML_SetUserData(parser.get(), &building);
  XML_SetElementHandler(parser.get(), OnStart, OnEnd);
  XML_SetCharacterDataHandler(parser.get(), OnText);
  XML_SetStartDoctypeDeclHandler(parser.get(), OnDocumentType);
  XML_SetXmlDeclHandler(parser.get(), OnDeclaration);
  XML_SetUnknownEncodingHandler(parser.get(), OnUnknownEncoding, nullptr);
  if (XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), XML_TRUE) != XML_STATUS_OK) {
    return std::nullopt;
  }
  return std::move(building.root);
}

}  // namespace emstatus::test
