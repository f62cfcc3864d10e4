#include "platform/RegistryFile.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <vector>

#include "platform/CDebugClient.h"

namespace emstatus {

namespace {

constexpr std::size_t kLongestLine = 1023;

/// Takes the next line off `text`. Without its line feed, and up to a zero byte.
std::string TakeLine(std::string_view& text) {
  std::string_view line = text.substr(0, kLongestLine);
  const std::size_t lineFeed = line.find('\n');
  text.remove_prefix(lineFeed == std::string_view::npos ? line.size() : lineFeed + 1);
  line = line.substr(0, lineFeed);
  return std::string(line.substr(0, line.find('\0')));
}

std::optional<RegistryValue> NumberFrom(const char* text) {
  char* end;
  const long long number = std::strtoll(text, &end, 10);
  if (end == text) return std::nullopt;
  return RegistryValue::Dword(static_cast<std::int32_t>(static_cast<std::uint32_t>(number)));
}

RegistryValue BinaryFrom(const char* text) {
  RegistryValue::Bytes bytes;
  for (;;) {
    char* end;
    const unsigned long number = std::strtoul(text, &end, 16);
    if (end == text) return RegistryValue::Binary(std::move(bytes));
    bytes.push_back(static_cast<std::uint8_t>(number));
    text = end;
  }
}

/// From what follows the name and its "=".
std::optional<RegistryValue> ValueFrom(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view type = line.substr(0, equals);
  std::string data(line.substr(equals + 1));
  if (type == "s") return RegistryValue::String(std::move(data));
  if (type == "es") return RegistryValue::ExpandableString(std::move(data));
  if (type == "d") return NumberFrom(data.c_str());
  if (type == "b") return BinaryFrom(data.c_str());
  return std::nullopt;
}

class TreeReader {
 public:
  explicit TreeReader(CRegistryNode& top) : top_(top) {}

  std::size_t Count() const { return count_; }

  /// False at the end of the top node.
  bool Take(std::string_view line) {
    if (line.empty()) return CloseKey();
    const std::size_t close = line.find(']');
    if (line.front() == '[' && close != std::string_view::npos) {
      OpenKey(line.substr(1, close - 1));
    } else if (levelsLeftOut_ == 0) {
      AddValue(line);
    }
    return true;
  }

 private:
  CRegistryNode& Current() { return open_.empty() ? top_ : *open_.back(); }

  bool CloseKey() {
    if (levelsLeftOut_ > 0) {
      --levelsLeftOut_;
      return true;
    }
    if (open_.empty()) return false;
    open_.pop_back();
    return true;
  }

  void OpenKey(std::string_view name) {
    if (open_.size() < kDeepestRegistryKey) {
      open_.push_back(Current().EnsureChild(name));
      ++count_;
      return;
    }
    if (levelsLeftOut_++ == 0) {
      EM_TRACE_ALWAYS(1, "CRegistry: WARNING: Key \"%.*s\" is nested too deep - it is left out\n",
                      static_cast<int>(name.size()), name.data());
    }
  }

  void AddValue(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return;
    if (std::optional<RegistryValue> value = ValueFrom(line.substr(equals + 1))) {
      Current().SetValue(line.substr(0, equals), *std::move(value));
      ++count_;
    }
  }

  CRegistryNode& top_;
  // From below the top to the key that is being read
  std::vector<CRegistryNode::Pointer> open_;
  std::size_t levelsLeftOut_ = 0;
  std::size_t count_ = 0;
};

std::string BinaryText(const RegistryValue::Bytes& bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(bytes.size() * 3);
  for (const std::uint8_t byte : bytes) {
    text.push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 15]);
    text.push_back(' ');
  }
  return text;
}

/// Without the line feed; empty for a value without data.
std::string LineOf(std::string_view name, const RegistryValue& value) {
  std::string line(name);
  if (const std::string* const text = value.Text()) {
    return line.append(value.Type() == RegistryType::kString ? "=s=" : "=es=").append(*text);
  }
  if (const RegistryValue::Bytes* const bytes = value.Binary())
    return line.append("=b=").append(BinaryText(*bytes));
  if (const std::int32_t* const number = value.Number())
    return line.append("=d=").append(std::to_string(*number));
  return {};
}

bool FitsALine(std::string_view line) {
  return line.size() < kLongestLine && line.find('\n') == std::string_view::npos &&
         line.find('\0') == std::string_view::npos;
}

bool IsReadAsItIs(std::string_view name, std::string_view line) {
  const bool looksLikeAKey = line.starts_with('[') && line.find(']') != std::string_view::npos;
  return FitsALine(line) && name.find('=') == std::string_view::npos && !looksLikeAKey;
}

void TellLeftOut(const char* what, const std::string& name) {
  EM_TRACE_ALWAYS(1, "CRegistry: WARNING: %s \"%s\" does not fit into the file - it is left out\n", what,
                  name.c_str());
}

void WriteNode(const CRegistryNode& node, std::size_t depth, std::string& text) {
  for (const auto& [name, value] : node.Values()) {
    const std::string line = LineOf(name, value);
    if (!IsReadAsItIs(name, line)) {
      TellLeftOut("Value", name);
    } else if (!line.empty()) {
      text.append(line).append("\n");
    }
  }
  for (const auto& [name, child] : node.Children()) {
    if (!IsRegistryKeyName(name) || depth == kDeepestRegistryKey) {
      TellLeftOut("Key", name);
      continue;
    }
    text.append("[").append(name).append("]\n");
    WriteNode(*child, depth + 1, text);
  }
  text.append("\n");
}

}  // namespace

std::size_t ReadRegistryText(std::string_view text, CRegistryNode& top) {
  TreeReader reader(top);
  while (!text.empty() && reader.Take(TakeLine(text))) {
  }
  return reader.Count();
}

std::string WriteRegistryText(const CRegistryNode& top) {
  std::string text;
  WriteNode(top, 0, text);
  return text;
}

bool IsRegistryValue(std::string_view name, const RegistryValue& value) {
  return IsReadAsItIs(name, LineOf(name, value));
}

bool IsRegistryKeyName(std::string_view name) {
  return FitsALine(std::string("[").append(name).append("]")) && name.find(']') == std::string_view::npos;
}

}  // namespace emstatus
