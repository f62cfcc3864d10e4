#pragma once

#include <random>
#include <string>
#include <string_view>

namespace emstatus::test {

/// Makes documents of all that markup has, the same ones for the same seed.
class DocumentMaker {
 public:
  explicit DocumentMaker(unsigned seed) : random_(seed) {}

  /// A well-formed document in one of the known encodings.
  std::string Document() { return Make(false); }

  /// The same with one to three small faults; may still be well-formed.
  std::string SpoiledDocument() { return Make(true); }

 private:
  std::size_t Below(std::size_t limit) { return random_() % limit; }
  bool Once(std::size_t in) { return Below(in) == 0; }
  template <typename... Texts>
  std::string_view OneOf(Texts... texts) {
    const std::string_view choices[] = {texts...};
    return choices[Below(sizeof...(texts))];
  }

  std::string Name();
  std::string Space(std::string_view least);
  std::string Characters(std::string_view forbidden);
  std::string Attributes();
  std::string Content(int depth);
  std::string ElementText(int depth);
  std::string Aside();
  std::string Prologue(std::string_view encoding);
  void Spoil(std::string& text);
  std::string Make(bool isSpoiled);

  std::mt19937 random_;
};

}  // namespace emstatus::test
