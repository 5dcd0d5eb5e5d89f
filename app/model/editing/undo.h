// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"
#include "state/review_undo.h"

#include <string>

namespace tessary {

// Puts back in `document` what `entry` recorded; `pairID` is the pair of the entry's frame, whose
// lean context a lean entry restores. Only what differs is written, so undoing never raises the
// revision for nothing.
void revert(dravik::ReviewDocument& document, const ReviewUndo& entry, const std::string& pairID);

} // namespace tessary
