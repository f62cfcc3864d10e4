#include "platform/RegistryValue.h"

#include <cstring>
#include <utility>

namespace emstatus {

RegistryValue RegistryValue::String(std::string text) {
  RegistryValue value(RegistryType::kString);
  value.hasData_ = true;
  value.text_ = std::move(text);
  return value;
}

RegistryValue RegistryValue::ExpandableString(std::string text) {
  RegistryValue value = String(std::move(text));
  value.type_ = RegistryType::kExpandableString;
  return value;
}

RegistryValue RegistryValue::Binary(Bytes bytes) {
  RegistryValue value(RegistryType::kBinary);
  value.hasData_ = true;
  value.bytes_ = std::move(bytes);
  return value;
}

RegistryValue RegistryValue::Dword(std::int32_t number) {
  RegistryValue value(RegistryType::kDword);
  value.number_ = number;
  return value;
}

const std::string* RegistryValue::Text() const {
  const bool isText = type_ == RegistryType::kString || type_ == RegistryType::kExpandableString;
  return isText && hasData_ ? &text_ : nullptr;
}

const RegistryValue::Bytes* RegistryValue::Binary() const {
  return type_ == RegistryType::kBinary && hasData_ ? &bytes_ : nullptr;
}

const std::int32_t* RegistryValue::Number() const {
  return type_ == RegistryType::kDword ? &number_ : nullptr;
}

std::size_t RegistryValue::Size() const {
  if (type_ == RegistryType::kDword) return sizeof number_;
  if (!hasData_) return 0;
  return type_ == RegistryType::kBinary ? bytes_.size() : text_.size() + 1;
}

void RegistryValue::CopyTo(void* room) const {
  const std::size_t size = Size();
  if (size == 0) return;
  const void* source = text_.c_str();
  if (type_ == RegistryType::kDword) source = &number_;
  if (type_ == RegistryType::kBinary) source = bytes_.data();
  std::memcpy(room, source, size);
}

}  // namespace emstatus
