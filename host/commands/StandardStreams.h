#pragma once

namespace emstatus::host {

/// Takes those of the descriptors 0, 1 and 2 that are closed, so that no file or socket opened later becomes
/// one of them and is given what belongs to standard output or error. Whatever is written there fails, as it
/// would without. To be called before anything is opened. [main thread]
void TakeClosedStandardStreams();

/// Writes out what standard output still holds. False when that, or anything written before, could not be
/// written: nothing is written from then on. [main thread]
bool FlushStandardOutput();

}  // namespace emstatus::host
