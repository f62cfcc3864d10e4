#include "host/module/ModuleLibrary.h"

#include <dlfcn.h>

#include <cstdint>
#include <filesystem>

namespace emstatus::host {
namespace {

std::string LastLoaderError() {
  const char* text = dlerror();
  return text == nullptr ? "unknown error" : text;
}

}  // namespace

ModuleLibrary::Handle::Handle(const std::string& path)
    : path_(path), handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) {
    throw ModuleError("the module " + path + " cannot be loaded: " + LastLoaderError() +
                      "\nGive the path of libEM_STATUS.so with --module.");
  }
}

ModuleLibrary::Handle::~Handle() {
  dlclose(handle_);
}

void* ModuleLibrary::Handle::Symbol(const char* name) const {
  void* symbol = dlsym(handle_, name);
  if (symbol == nullptr) {
    throw ModuleError(path_ + " is no extension module: it does not export " + name +
                      ".\nGive the path of libEM_STATUS.so with --module.");
  }
  return symbol;
}

ModuleLibrary::ModuleLibrary(const std::string& path)
    : handle_(path), deleteModule_(reinterpret_cast<int (*)()>(handle_.Symbol("EM_Delete"))) {
  const auto create =
      reinterpret_cast<bool (*)(CIExtensionModule**, std::uintptr_t)>(handle_.Symbol("EM_Create"));
  if (!create(&module_, 0) || module_ == nullptr) {
    throw ModuleError("the module " + path + " could not be created; --trace 1 tells more.");
  }
}

ModuleLibrary::~ModuleLibrary() {
  deleteModule_();
}

std::string FindModule(const std::vector<std::string>& candidates) {
  std::string list;
  for (const std::string& candidate : candidates) {
    std::error_code ignored;
    if (std::filesystem::exists(candidate, ignored)) {
      return candidate;
    }
    list += "\n  " + candidate;
  }
  throw ModuleError("libEM_STATUS.so was not found. Looked for:" + list +
                    "\nBuild the target EM_STATUS, or give the path with --module.");
}

}  // namespace emstatus::host
