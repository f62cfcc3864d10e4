#pragma once

#include <string>

#include "host/providers/Reading.h"

namespace emstatus::host {

/// Whether an errno says that the object, or the device behind it, is no longer there. Such an object is not
/// told, so that the host makes it lost. [any thread]
bool IsGone(int error);

/// What an errno says about the sensor that answered with it: broken, switched off, or not answering. [any
/// thread]
Quality QualityOfError(int error);

/// The errno in words ("Input/output error"). [any thread]
std::string ErrorText(int error);

/// Makes `reading` one that could not be read: its quality by `error`, no measurement, and a reason that
/// names `what` failed ("temp1_input"). [any thread]
void SetUnread(Reading& reading, const std::string& what, int error);

/// Makes `reading` one that is not known, for a reason: no measurement is left in it. [any thread]
void SetUnknown(Reading& reading, Quality quality, std::string reason);

}  // namespace emstatus::host
