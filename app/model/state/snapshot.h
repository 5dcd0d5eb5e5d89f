// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean_report.h"
#include "dravik/pair_report.h"
#include "dravik/pairs.h"
#include "dravik/review.h"

#include <memory>
#include <optional>
#include <vector>

namespace tessary {

// The open session as observers see it: one document with everything derived from it, replaced
// whole after every change. The document is shared, never changed, so copies are cheap.
struct Snapshot {
    std::shared_ptr<const dravik::ReviewDocument> documentPointer;
    std::vector<dravik::ReviewPair> pairs;
    std::optional<dravik::PairReport> report; // none without a current pair with a reference
    dravik::LeanReport leanReport;

    const dravik::ReviewDocument& document() const { return *documentPointer; }
};

} // namespace tessary
