// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"

#include <optional>
#include <string>
#include <string_view>

namespace dravik::lean {

// The checks that need no frame, shared by the JSON readers and LeanAnnotation::validate. Each
// problem is a phrase that completes a sentence about the thing checked ("… is shorter than 1
// pixel"), so that both can word their sentence around it.

double length(const LeanLine& line);
std::optional<std::string> lineProblem(const LeanLine& line);
std::optional<std::string> flagProblem(const LeanAnnotation& annotation);
// Feature IDs and provenance: a short single line of valid UTF-8.
std::optional<std::string> textProblem(std::string_view text);
std::string trimmed(std::string_view text);

} // namespace dravik::lean
