// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <functional>

namespace tessary {

// A change of the review document, made through the core's operations on a copy.
using DocumentChange = std::function<void(dravik::ReviewDocument&)>;

enum class CommitOutcome {
    unchanged, // the change changed nothing: nothing published, recorded or saved
    refused,   // the change or its analysis failed: `error` says why, nothing changed
    saved,     // published, recorded and saved
    unsaved,   // published and recorded, but the save failed (see `message` and `error`)
};

inline bool committed(CommitOutcome outcome) {
    return outcome == CommitOutcome::saved || outcome == CommitOutcome::unsaved;
}

// Whether `revised` says anything `current` does not; the revision alone does not count.
bool changesContent(const dravik::ReviewDocument& current, const dravik::ReviewDocument& revised);

} // namespace tessary
