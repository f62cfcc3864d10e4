#pragma once

#include <cstdint>

#include <emstatus/CIExtensionModule.h>

/// The four functions that an extension module exports.
extern "C" {

/// Creates the module, or hands out the one that is there. False, and `*out` null, when it cannot be made.
/// `argument` is not used. [host thread; never together with EM_Delete]
bool EM_Create(emstatus::CIExtensionModule** out, std::uintptr_t argument);

/// Destroys the module. 1 when it was destroyed, 0 when there was none. [host thread; after Stop]
int EM_Delete();

/// The module's name; the text lives as long as the library is loaded. [any thread]
const char* EM_GetModuleName();

/// A step of the host's installation: 1 backup, 2 restore, 3 convert, 4 clean up. Always 1. [host thread]
int EM_SetupAction(std::uint32_t action);
}
