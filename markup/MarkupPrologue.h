#pragma once

#include "markup/MarkupCursor.h"

/// What stands around elements and says nothing of them. Each operation goes behind what it names, or answers
/// false with the cursor's error set. [one thread for a cursor]
namespace emstatus {

/// The declaration at the beginning of a document ("<?xml ..."), when there is one.
bool SkipDeclaration(MarkupCursor& cursor);

/// "<!-- ... -->", the cursor standing on it.
bool SkipComment(MarkupCursor& cursor);

/// "<?target ...?>", the cursor standing on it.
bool SkipInstruction(MarkupCursor& cursor);

/// White space, comments and processing instructions, as many as there are.
bool SkipMiscellany(MarkupCursor& cursor);

/// What stands before the root element: miscellany with at most one document type in it. An internal subset
/// ("<!DOCTYPE a [ ... ]>") is an error: entities of a document's own are not read.
bool SkipPrologue(MarkupCursor& cursor);

}  // namespace emstatus
