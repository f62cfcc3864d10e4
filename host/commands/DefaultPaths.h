#pragma once

#include <string>
#include <vector>

/// Where the pieces of an installation, or of a build tree, are looked for. [any thread]
namespace emstatus::host {

/// The folder of the running program.
std::string ProgramFolder();

/// Places of libEM_STATUS.so, best first.
std::vector<std::string> ModuleCandidates(const std::string& programFolder);

/// Folders of EM_STATUS.ini, best first.
std::vector<std::string> ConfigurationCandidates(const std::string& programFolder);

/// The folder to use: `wanted` (made absolute) or the first candidate with an EM_STATUS.ini in it. Throws a
/// std::runtime_error that says where it looked when there is none.
std::string FindConfiguration(const std::string& wanted, const std::vector<std::string>& candidates);

}  // namespace emstatus::host
