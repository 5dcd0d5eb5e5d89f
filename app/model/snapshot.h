#pragma once

#include "dravik/analysis.h"
#include "dravik/review.h"

#include <memory>
#include <optional>

namespace tessary {

// The open session as observers see it: one document and the report of the current pair,
// replaced whole after every change. The document is shared, never changed, so copies are cheap.
struct Snapshot {
    std::shared_ptr<const dravik::ReviewDocument> documentPointer;
    std::optional<dravik::PairReport> report; // none without a current pair

    const dravik::ReviewDocument& document() const { return *documentPointer; }
};

} // namespace tessary
