#include "host/machine/JsonNode.h"

#include <algorithm>

#include "host/machine/ScenarioFile.h"

namespace emstatus::host {
namespace {

constexpr std::size_t kLongestQuote = 40;

std::string Shown(const nlohmann::json& value) {
  const std::string text = value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  return text.size() <= kLongestQuote ? text : text.substr(0, kLongestQuote) + "...";
}

/// A name as it stands in a JSON pointer.
std::string Escaped(std::string_view name) {
  std::string escaped;
  for (const char character : name) {
    escaped += character == '~' ? "~0" : character == '/' ? "~1" : std::string(1, character);
  }
  return escaped;
}

}  // namespace

void JsonNode::Fail(const std::string& expected) const {
  throw ScenarioError(*file_ + ": " + (pointer_.empty() ? "/" : pointer_) + ": expected " + expected +
                      ", found " + Shown(*value_));
}

void JsonNode::ExpectMembers(std::initializer_list<std::string_view> names) const {
  if (!value_->is_object()) {
    Fail("an object");
  }
  for (const auto& [name, member] : value_->items()) {
    if (std::ranges::find(names, name) == names.end()) {
      std::string known;
      for (const std::string_view one : names) {
        known += (known.empty() ? "" : ", ") + std::string(one);
      }
      JsonNode(member, *file_, pointer_ + "/" + Escaped(name))
          .Fail("no member of this name (known: " + known + ")");
    }
  }
}

std::optional<JsonNode> JsonNode::Find(const char* name) const {
  const auto found = value_->find(name);
  if (found == value_->end()) {
    return std::nullopt;
  }
  return JsonNode(*found, *file_, pointer_ + "/" + Escaped(name));
}

JsonNode JsonNode::At(const char* name) const {
  auto member = Find(name);
  if (!member) {
    Fail("a member \"" + std::string(name) + "\"");
  }
  return *member;
}

std::vector<JsonNode> JsonNode::Elements() const {
  if (!value_->is_array()) {
    Fail("an array");
  }
  std::vector<JsonNode> elements;
  for (const auto& element : *value_) {
    elements.push_back(JsonNode(element, *file_, pointer_ + "/" + std::to_string(elements.size())));
  }
  return elements;
}

std::string JsonNode::Text() const {
  if (!value_->is_string()) {
    Fail("a text");
  }
  return value_->get<std::string>();
}

bool JsonNode::Boolean() const {
  if (!value_->is_boolean()) {
    Fail("true or false");
  }
  return value_->get<bool>();
}

double JsonNode::Number() const {
  if (!value_->is_number()) {
    Fail("a number");
  }
  return value_->get<double>();
}

std::uint32_t JsonNode::Whole(std::uint32_t smallest, std::uint32_t largest) const {
  const bool fits = value_->is_number_unsigned() && value_->get<std::uint64_t>() >= smallest &&
                    value_->get<std::uint64_t>() <= largest;
  if (!fits) {
    Fail("a whole number from " + std::to_string(smallest) + " to " + std::to_string(largest));
  }
  return value_->get<std::uint32_t>();
}

}  // namespace emstatus::host
