#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace emstatus {

/// One INI file by its name, with values and lists of any usual length (up to 64,509 characters), numbers,
/// and changes in place. Nothing of the file is kept: every operation opens it anew. What a file may hold is
/// told in platform/PrivateProfile.h.
///
/// Unless said otherwise an operation does nothing and answers 0, false, "" or the default while the object
/// is closed and when a name it needs is null. A null default of a text is "". [one thread at a time]
class ProfileFile {
 public:
  ProfileFile() = default;
  ProfileFile(const ProfileFile&) = delete;
  ProfileFile& operator=(const ProfileFile&) = delete;

  /// Remembers `path` in place of the name before. With `checkExists` 0 that is all, and the result is 1;
  /// otherwise the result is `checkExists`, or 0 with the object closed when the file cannot be read. A null
  /// `path` forgets the name, closes the object and gives 0.
  int Open(const char* path, std::uint8_t checkExists);

  /// Open() with the name remembered.
  int Reopen(std::uint8_t checkExists);

  /// Not 0 while open: 1, or the `checkExists` it was opened with.
  std::uint8_t IsOpen() const { return isOpen_; }

  /// Keeps the name and the texts handed out.
  void Close() { isOpen_ = 0; }

  /// The name remembered, or "". Valid until the next Open().
  const char* GetFileName() const { return fileName_ ? fileName_->c_str() : ""; }

  /// The value as a number in C notation (0x: hexadecimal, leading zero: octal), cut to 32 bits; 0 for text
  /// that does not begin with a number, `defaultValue` for a missing or empty value.
  int GetInt(const char* section, const char* key, int defaultValue);

  /// The value, or `defaultText` when it is missing or empty; the result is 1. A text that is too long gives
  /// 0 and `defaultText`; a closed object or a null name gives 0 and leaves `out` as it is.
  int GetString(std::string& out, const char* section, const char* key, const char* defaultText);

  /// The same without a copy: valid until the next GetValue() or the end of the object. `defaultText` itself
  /// is returned on failure.
  const char* GetValue(const char* section, const char* key, const char* defaultText);

  /// The first name in the list of the section's keys, or of all sections when `section` is null; "" when
  /// there is none. The others follow with NextListEntry(). Valid until the next list or the end of the
  /// object.
  const char* GetList(const char* section);

  /// The next name of the list read last, "" at its end.
  const char* NextListEntry();

  /// Appends the names of the section's keys in the order of the file. False when there are none. An empty
  /// name (a line that begins with "=") ends the list.
  bool GetKeyNames(std::vector<std::string>& names, const char* section);

  /// Appends the names of all sections in the order of the file; otherwise as GetKeyNames().
  bool GetSectionNames(std::vector<std::string>& names);

  /// Sets an entry, as WritePrivateProfileString() does: a null `value` removes the entry, a null `key` the
  /// section. 1 when done, else 0.
  int WriteString(const char* section, const char* key, const char* value);
  int WriteUInt(const char* section, const char* key, unsigned value);
  int WriteInt(const char* section, const char* key, int value);

  /// Removes a section or an entry: 1, or 0 when it is not there. A null section and a missing file name are
  /// told to the trace.
  int DeleteSection(const char* section);
  int DeleteKey(const char* section, const char* key);

  /// Writes every entry of the section `source` into the section `target` of the same file, where other
  /// entries stay. Returns whether the object was open (as IsOpen()).
  std::uint8_t CopySection(const char* source, const char* target);

 private:
  /// A buffer that is enlarged as long as what it receives may have been cut.
  struct Buffer {
    std::unique_ptr<char[]> bytes;
    std::uint32_t size = 0;

    bool Enlarge();
  };

  /// Reads as GetPrivateProfileString(); false, with `buffer` freed, when even the largest buffer is too
  /// small.
  bool ReadInto(Buffer& buffer, const char* section, const char* key, const char* defaultText) const;
  bool AppendNames(std::vector<std::string>& names, const char* section);

  std::optional<std::string> fileName_;
  Buffer value_;
  Buffer list_;
  const char* listCursor_ = nullptr;
  std::uint8_t isOpen_ = 0;
};

}  // namespace emstatus
