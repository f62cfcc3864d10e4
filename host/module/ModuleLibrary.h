#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include <emstatus/CIExtensionModule.h>

namespace emstatus::host {

/// What, where, and what to do, in one text for people.
class ModuleError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The shared library of an extension module and the one module in it. [main thread]
class ModuleLibrary {
 public:
  /// Loads the library and creates its module; a ModuleError when that cannot be.
  explicit ModuleLibrary(const std::string& path);
  ModuleLibrary(const ModuleLibrary&) = delete;
  ModuleLibrary& operator=(const ModuleLibrary&) = delete;
  /// Deletes the module and unloads the library.
  ~ModuleLibrary();

  CIExtensionModule& Module() { return *module_; }

 private:
  class Handle {
   public:
    explicit Handle(const std::string& path);
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle();
    /// A function of the library; a ModuleError without it.
    void* Symbol(const char* name) const;

   private:
    std::string path_;
    void* handle_;
  };

  Handle handle_;
  int (*deleteModule_)();
  CIExtensionModule* module_ = nullptr;
};

/// The first of `candidates` that exists; a ModuleError that lists them all when there is none.
std::string FindModule(const std::vector<std::string>& candidates);

}  // namespace emstatus::host
