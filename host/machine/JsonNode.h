#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace emstatus::host {

/// A place in a JSON document that knows its pointer, so that whatever is wrong with it can be told: each
/// accessor throws a ScenarioError with file, pointer and what was expected. Lives no longer than the
/// document.
class JsonNode {
 public:
  JsonNode(const nlohmann::json& value, const std::string& file) : value_(&value), file_(&file) {}

  [[noreturn]] void Fail(const std::string& expected) const;

  /// Refuses anything but an object with members of these names only.
  void ExpectMembers(std::initializer_list<std::string_view> names) const;
  std::optional<JsonNode> Find(const char* name) const;
  /// The member, which must be there.
  JsonNode At(const char* name) const;
  std::vector<JsonNode> Elements() const;

  std::string Text() const;
  bool Boolean() const;
  double Number() const;
  std::uint32_t Whole(std::uint32_t smallest, std::uint32_t largest) const;
  const nlohmann::json& Value() const { return *value_; }

 private:
  JsonNode(const nlohmann::json& value, const std::string& file, std::string pointer)
      : value_(&value), file_(&file), pointer_(std::move(pointer)) {}

  const nlohmann::json* value_;
  const std::string* file_;
  std::string pointer_;
};

}  // namespace emstatus::host
