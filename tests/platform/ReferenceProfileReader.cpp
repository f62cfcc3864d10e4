#include "tests/platform/ReferenceProfileReader.h"

#include <cctype>
#include <cstdio>
#include <cstring>

namespace emstatus::test {
namespace {

char* Strip(char* text) {
  while (std::isspace(static_cast<unsigned char>(*text))) ++text;
  text[std::strcspn(text, ";")] = '\0';
  for (std::size_t length = std::strlen(text); length > 0; --length) {
    if (!std::isspace(static_cast<unsigned char>(text[length - 1]))) break;
    text[length - 1] = '\0';
  }
  return text;
}

std::string Clipped(std::string text, std::size_t size, bool isList) {
  if (isList && text.size() >= size) return text.substr(0, size - 2) + '\0';
  if (isList) return text.empty() ? text : text + '\0';
  return text.substr(0, size - 1);
}

}  // namespace

std::string ReferenceProfileString(const char* section, const char* key, const char* defaultText,
                                   std::size_t size, const std::string& path) {
  const bool isList = section == nullptr || key == nullptr;
  std::string result;
  std::FILE* const file = std::fopen(path.c_str(), "r");
  char line[1024];
  bool inside = false;
  while (result.size() + 2 < size && std::fgets(line, sizeof line, file) != nullptr) {
    char* text = Strip(line);
    char* mark = std::strchr(text, '=');
    if (*text == '[') {
      if (inside) break;
      char* close = std::strchr(text, ']');
      if (section != nullptr) {
        const std::size_t length = std::strlen(section);
        inside = std::strncmp(text + 1, section, length) == 0 && text[1 + length] == ']';
      } else if (close != nullptr) {
        result.append(text + 1, close).push_back('\0');
      }
    } else if (inside && mark != nullptr) {
      *mark = '\0';
      const std::string name = Strip(text);
      if (isList) {
        result.append(name).push_back('\0');
      } else if (name == key) {
        result = Strip(mark + 1);
        break;
      }
    }
  }
  std::fclose(file);
  if (result.empty() && !isList && defaultText != nullptr) result = defaultText;
  return Clipped(std::move(result), size, isList);
}

}  // namespace emstatus::test
