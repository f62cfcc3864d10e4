#include "host/module/CommandJson.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

namespace emstatus::host {
namespace {

constexpr int kDeepest = 64;
constexpr std::uint32_t kFirstCapacity = 16;

CommandKind KindOf(const CommandValue& value) {
  return CommandKind(value.tag & 0xFF);
}

std::string_view TextOf(const CommandValue& value) {
  const bool isText = KindOf(value) == CommandKind::String && value.string.text != nullptr;
  return isText ? std::string_view(value.string.text, value.string.length) : std::string_view{};
}

nlohmann::json NumberToJson(const CommandValue& value) {
  if ((value.tag & tagbit::kFitsInt32) != 0) {
    return std::int32_t(value.signedNumber);
  }
  if ((value.tag & tagbit::kFitsUInt32) != 0) {
    return std::uint32_t(value.unsignedNumber);
  }
  if ((value.tag & tagbit::kFitsInt64) != 0) {
    return value.signedNumber;
  }
  if ((value.tag & tagbit::kFitsUInt64) != 0) {
    return value.unsignedNumber;
  }
  return value.floatNumber;
}

nlohmann::json ToJsonAt(const CommandValue& value, int depth) {
  if (depth > kDeepest) {
    return nullptr;
  }
  switch (KindOf(value)) {
    case CommandKind::False:
      return false;
    case CommandKind::True:
      return true;
    case CommandKind::Number:
      return NumberToJson(value);
    case CommandKind::String:
      return TextOf(value);
    case CommandKind::Object: {
      nlohmann::json object = nlohmann::json::object();
      for (std::uint32_t index = 0; index < value.object.count; ++index) {
        const CommandMember& member = value.object.members[index];
        object.emplace(TextOf(member.name), ToJsonAt(member.value, depth + 1));
      }
      return object;
    }
    case CommandKind::Array: {
      nlohmann::json array = nlohmann::json::array();
      for (std::uint32_t index = 0; index < value.array.count; ++index) {
        array.push_back(ToJsonAt(value.array.elements[index], depth + 1));
      }
      return array;
    }
    case CommandKind::Null:
      break;
  }
  return nullptr;
}

CommandValue Tagged(std::uint32_t tag) {
  CommandValue value;
  std::memset(&value, 0, sizeof(value));
  value.tag = tag;
  return value;
}

CommandValue MakeSigned(std::int64_t number) {
  CommandValue value = Tagged(std::uint32_t(CommandKind::Number) | tagbit::kNumber | tagbit::kFitsInt64);
  value.signedNumber = number;
  if (number >= std::numeric_limits<std::int32_t>::min()) {
    value.tag |= tagbit::kFitsInt32;
  }
  return value;
}

CommandValue MakeUnsigned(std::uint64_t number) {
  CommandValue value = Tagged(std::uint32_t(CommandKind::Number) | tagbit::kNumber | tagbit::kFitsUInt64);
  value.unsignedNumber = number;
  if (number <= std::uint64_t(std::numeric_limits<std::int64_t>::max())) {
    value.tag |= tagbit::kFitsInt64;
  }
  if (number <= std::numeric_limits<std::uint32_t>::max()) {
    value.tag |= tagbit::kFitsUInt32;
  }
  if (number <= std::uint64_t(std::numeric_limits<std::int32_t>::max())) {
    value.tag |= tagbit::kFitsInt32;
  }
  return value;
}

CommandValue MakeText(std::string_view text) {
  // One byte more than the text, so that even an empty one has an address.
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  CommandValue value = Tagged(tag::kOwnedString);
  value.string.text = copy;
  value.string.length = std::uint32_t(text.size());
  return value;
}

/// Room for one entry more, growing as the contract has it.
template <typename Entry>
void Grow(Entry*& entries, std::uint32_t count, std::uint32_t& capacity) {
  if (count < capacity) {
    return;
  }
  const std::uint32_t larger = capacity == 0 ? kFirstCapacity : capacity * 2;
  auto* grown = larger <= count ? nullptr
                                : static_cast<Entry*>(std::realloc(static_cast<void*>(entries),
                                                                   std::size_t(larger) * sizeof(Entry)));
  if (grown == nullptr) {
    throw std::bad_alloc();
  }
  entries = grown;
  capacity = larger;
}

void AppendMember(CommandValue& object, CommandValue name, CommandValue value) {
  Grow(object.object.members, object.object.count, object.object.capacity);
  object.object.members[object.object.count++] = {name, value};
}

CommandValue MakeObject(const nlohmann::json& members) {
  CommandValue object = Tagged(tag::kObject);
  for (const auto& [name, member] : members.items()) {
    AppendMember(object, MakeText(name), MakeValue(member));
  }
  return object;
}

CommandValue MakeArray(const nlohmann::json& elements) {
  CommandValue array = Tagged(tag::kArray);
  for (const nlohmann::json& element : elements) {
    Grow(array.array.elements, array.array.count, array.array.capacity);
    array.array.elements[array.array.count++] = MakeValue(element);
  }
  return array;
}

}  // namespace

nlohmann::json ToJson(const CommandValue& value) {
  return ToJsonAt(value, 0);
}

CommandValue MakeValue(const nlohmann::json& source) {
  switch (source.type()) {
    case nlohmann::json::value_t::boolean:
      return Tagged(source.get<bool>() ? tag::kTrue : tag::kFalse);
    case nlohmann::json::value_t::number_integer:
      return source.get<std::int64_t>() < 0 ? MakeSigned(source.get<std::int64_t>())
                                            : MakeUnsigned(source.get<std::uint64_t>());
    case nlohmann::json::value_t::number_unsigned:
      return MakeUnsigned(source.get<std::uint64_t>());
    case nlohmann::json::value_t::number_float: {
      CommandValue value = Tagged(std::uint32_t(CommandKind::Number) | tagbit::kNumber);
      value.floatNumber = source.get<double>();
      return value;
    }
    case nlohmann::json::value_t::string:
      return MakeText(source.get_ref<const std::string&>());
    case nlohmann::json::value_t::object:
      return MakeObject(source);
    case nlohmann::json::value_t::array:
      return MakeArray(source);
    default:
      return Tagged(tag::kNull);
  }
}

void ReleaseValue(CommandValue& value) {
  if (KindOf(value) == CommandKind::Array) {
    for (std::uint32_t index = 0; index < value.array.count; ++index) {
      ReleaseValue(value.array.elements[index]);
    }
    std::free(value.array.elements);
  } else if (KindOf(value) == CommandKind::Object) {
    for (std::uint32_t index = 0; index < value.object.count; ++index) {
      ReleaseValue(value.object.members[index].name);
      ReleaseValue(value.object.members[index].value);
    }
    std::free(value.object.members);
  } else if (value.tag == tag::kOwnedString) {
    std::free(const_cast<char*>(value.string.text));
  }
  value = Tagged(tag::kNull);
}

const CommandValue* FindMember(const CommandValue& object, std::string_view name) {
  if (KindOf(object) != CommandKind::Object) {
    return nullptr;
  }
  for (std::uint32_t index = 0; index < object.object.count; ++index) {
    const CommandMember& member = object.object.members[index];
    if (KindOf(member.name) == CommandKind::String && TextOf(member.name) == name) {
      return &member.value;
    }
  }
  return nullptr;
}

void SetMember(CommandValue& object, const char* name, CommandValue value) {
  if (const CommandValue* found = FindMember(object, name)) {
    auto& member = const_cast<CommandValue&>(*found);
    ReleaseValue(member);
    member = value;
    return;
  }
  CommandValue constant = Tagged(tag::kConstantString);
  constant.string.text = name;
  constant.string.length = std::uint32_t(std::strlen(name));
  AppendMember(object, constant, value);
}

}  // namespace emstatus::host
