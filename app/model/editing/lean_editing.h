// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/review.h"

#include <string>

namespace tessary {

// Stores `annotation` for its frame. A changed line voids the checks and approval given for the
// old one, so the pair's lean context, if any, is replaced by a fresh one; how fast the riders
// went is the reviewer's report, not evidence from the lines, and is kept.
void storeLeanLines(dravik::ReviewDocument& document, const dravik::LeanAnnotation& annotation,
                    const std::string& pairID);

} // namespace tessary
