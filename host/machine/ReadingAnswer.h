#pragma once

#include "host/machine/Machine.h"

namespace emstatus::host {

/// Answers a question about one object from its reading. Question::Count, ClassName and Confirm are not about
/// one object: they are "not supported" here. `data` is the request's (a limit for StateAbove and
/// StateBelow). [any thread]
Answer AnswerFromReading(const ObjectView& object, Question question,
                         const std::optional<nlohmann::json>& data);

/// Whether a question is about a class as a whole.
bool IsAboutClass(Question question);

}  // namespace emstatus::host
