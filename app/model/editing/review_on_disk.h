// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"
#include "dravik/review_merge.h"
#include "dravik/uuid.h"

#include <memory>

namespace tessary {

// A merge with the review on disk, waiting for the reviewer to settle its conflicts. It belongs
// to the document it was made from: applied to any other, it would drop what changed since.
struct PendingMerge {
    dravik::ReviewMerge merge;
    dravik::Uuid sessionID;
    std::shared_ptr<const dravik::ReviewDocument> mine;
};

} // namespace tessary
