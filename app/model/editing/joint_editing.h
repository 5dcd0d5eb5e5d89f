// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pair_report.h"
#include "dravik/pairs.h"

#include <string>

namespace tessary {

// The context to store when the reviewer changes one field of the pair's context: knee
// placements were chosen under the direction in force, so a new direction override clears them.
dravik::PairContext contextToStore(dravik::PairContext chosen, const std::string& pairID,
                                   const dravik::PairReport* current);

} // namespace tessary
