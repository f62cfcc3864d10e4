#pragma once

#include <cstdint>

/// Reading and changing of INI files, with nothing kept between two calls: every call opens the file, scans
/// it from its start and closes it.
///
/// What a file may hold: `[section]` headers, `key=value` lines, and comments, which begin with ";" anywhere
/// in a line; there is no quoting. Blanks around a line, a key and a value do not count; names are compared
/// byte by byte. A line of more than 1023 characters falls apart into several, and a zero byte ends the line
/// it is in.
///
/// The operations take no lock: two calls that change one file must not run at the same time.
namespace emstatus {

/// Places the value of `key` in `section` into `buffer`, closed with a zero, and returns its length. The
/// first section of that name and the first line with that key count. When the file, the section or the key
/// is missing or the value is empty, it is `defaultText`, cut to the buffer, that is placed and measured;
/// without a default the buffer is empty and the result 0.
///
/// With a null `key` the buffer receives the names of the section's keys, and with a null `section` those of
/// all sections, in the order of the file, each closed with a zero and the last one followed by one more
/// zero; the result counts every name with its zero, and is 0 for an empty list, which is a buffer that
/// begins with zero.
///
/// A result of `size` - 2 or `size` - 1 may have been cut: try again with a larger buffer. Nothing is written
/// into a buffer of size 0. A file that cannot be opened is told to the trace (level 4). [any thread]
std::uint32_t GetPrivateProfileString(const char* section, const char* key, const char* defaultText,
                                      char* buffer, std::uint32_t size, const char* path);

/// The same, and 0 when `buffer` or `path` is null. [any thread]
std::uint32_t CheckedGetPrivateProfileString(const char* section, const char* key, const char* defaultText,
                                             char* buffer, std::uint32_t size, const char* path);

/// Changes the file in place. With `key` and `value`: the first line with that key in the first section of
/// that name is replaced, or the entry is added at the end of the section, or a new section is added at the
/// end of the file, which is made (mode 0644) when there is none. With a null `value` the entry is removed,
/// with a null `key` the whole section. `section` and `path` are not null.
///
/// Returns true when the file now is as asked, also when something was to be removed from a file that cannot
/// be opened; false when what was to be removed is not in the file, or when reading or writing failed. The
/// call and its result are told to the trace (level 4; a file that cannot be made on level 1). [any thread]
bool WritePrivateProfileString(const char* section, const char* key, const char* value, const char* path);

/// The same; false, with a line in the trace, when `section` or `path` is null. [any thread]
bool CheckedWritePrivateProfileString(const char* section, const char* key, const char* value,
                                      const char* path);

}  // namespace emstatus
