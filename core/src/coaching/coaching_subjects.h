// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include "json/json_reader.h"
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace dravik::coaching {

// The checklist subjects of a session, by subject id: each subject's frames, rider first.
// Fails (naming the coaching file of `source`) when the frames cannot be grouped into pairs.
std::map<std::string, std::vector<const ReviewFrame*>>
sessionSubjects(const std::vector<ReviewFrame>& frames, const json::Source& source);

// The sentence for a coaching file that does not fit the open session:
// “coaching-checklist.json” does not match this session: <problem>.
[[noreturn]] void failMismatch(const json::Source& source, std::string_view problem);
[[noreturn]] void failMismatch(const json::Node& node, std::string_view problem);

} // namespace dravik::coaching
