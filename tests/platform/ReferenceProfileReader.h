#pragma once

#include <string>

namespace emstatus::test {

/// The rules of INI files read the plain way, line by line with fgets: what GetPrivateProfileString() places
/// in a buffer of `size` bytes, all bytes of the result included. Null names as there.
std::string ReferenceProfileString(const char* section, const char* key, const char* defaultText,
                                   std::size_t size, const std::string& path);

}  // namespace emstatus::test
