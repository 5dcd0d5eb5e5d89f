// SPDX-License-Identifier: Apache-2.0
#include "dravik/review.h"

#include <algorithm>

namespace dravik {

std::optional<std::int64_t>
ReviewEditTarget::index(const ReviewDocument& document, const Uuid& currentSession,
                        const Uuid& currentCanvas,
                        const std::vector<std::string>& visibleIDs) const {
    if (session != currentSession || canvas != currentCanvas)
        return std::nullopt;
    if (std::find(visibleIDs.begin(), visibleIDs.end(), frameID) == visibleIDs.end())
        return std::nullopt;
    auto found = document.frameIndex(frameID);
    if (!found)
        return std::nullopt;
    return static_cast<std::int64_t>(*found);
}

} // namespace dravik
