#include "host/configuration/RequestElement.h"

#include <expat.h>

#include <cstdlib>
#include <memory>
#include <utility>

namespace emstatus::host {
namespace {

/// The module's own bounds of a document.
constexpr std::size_t kLargestRequest = std::size_t{1} << 20;
constexpr int kDeepestRequest = 64;

/// What expat's callbacks share.
struct RequestBuilding {
  XML_Parser parser;
  RequestElement root;
  int depth = 0;
  /// Within the first DATA element, before its first child.
  bool inData = false;
  /// Well-formed, but nothing that the module reads.
  const char* refused = nullptr;

  void Refuse(const char* why) {
    refused = why;
    XML_StopParser(parser, XML_FALSE);
  }

  static RequestBuilding& Of(void* data) { return *static_cast<RequestBuilding*>(data); }
};

void OnRequestStart(void* data, const char* name, const char** attributes) {
  RequestBuilding& building = RequestBuilding::Of(data);
  if (building.depth == kDeepestRequest) {
    building.Refuse("too many elements within each other");
    return;
  }
  ++building.depth;
  building.inData = false;
  if (building.depth == 1) {
    building.root.name = name;
    for (; *attributes != nullptr; attributes += 2) {
      building.root.attributes.emplace(attributes[0], attributes[1]);
    }
  } else if (building.depth == 2 && !building.root.data && std::string_view(name) == "DATA") {
    building.inData = true;
    building.root.data.emplace();
    for (; *attributes != nullptr; attributes += 2) {
      if (std::string_view(attributes[0]) == "Type") {
        building.root.data->type = attributes[1];
      }
    }
  }
}

void OnRequestEnd(void* data, const char*) {
  --RequestBuilding::Of(data).depth;
  RequestBuilding::Of(data).inData = false;
}

void OnRequestText(void* data, const char* text, int length) {
  RequestBuilding& building = RequestBuilding::Of(data);
  if (building.inData) {
    building.root.data->text.append(text, static_cast<std::size_t>(length));
  }
}

void OnRequestDocumentType(void* data, const char*, const char*, const char*, int hasInternalSubset) {
  if (hasInternalSubset != 0) {
    RequestBuilding::Of(data).Refuse("a document type with declarations");
  }
}

}  // namespace

const std::string* RequestElement::Attribute(std::string_view attribute) const {
  const auto found = attributes.find(attribute);
  return found == attributes.end() ? nullptr : &found->second;
}

std::optional<std::uint32_t> RequestElement::HexNumber(std::string_view attribute) const {
  const std::string* text = Attribute(attribute);
  if (text == nullptr) {
    return std::nullopt;
  }
  return static_cast<std::uint32_t>(std::strtol(text->c_str(), nullptr, 16));
}

std::optional<RequestElement> ReadRequestElement(std::string_view text, std::string& problem) {
  if (text.size() > kLargestRequest) {
    problem = "more than 1 MiB of text";
    return std::nullopt;
  }
  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                            &XML_ParserFree);
  RequestBuilding building{.parser = parser.get(), .root = {}};
  XML_SetUserData(parser.get(), &building);
  XML_SetElementHandler(parser.get(), OnRequestStart, OnRequestEnd);
  XML_SetCharacterDataHandler(parser.get(), OnRequestText);
  XML_SetStartDoctypeDeclHandler(parser.get(), OnRequestDocumentType);
  if (XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), XML_TRUE) == XML_STATUS_OK) {
    return std::move(building.root);
  }
  problem = building.refused != nullptr
                ? std::string(building.refused)
                : std::string(XML_ErrorString(XML_GetErrorCode(parser.get()))) + " at character " +
                      std::to_string(XML_GetCurrentColumnNumber(parser.get()) + 1);
  return std::nullopt;
}

}  // namespace emstatus::host
