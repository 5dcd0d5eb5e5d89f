// SPDX-License-Identifier: Apache-2.0
#include "dravik/detection.h"

#include <algorithm>

namespace dravik {

bool DravikResult::usable() const {
    return status == "needsReview" && count == 1 && !joints.empty();
}

std::optional<Point2> DravikResult::point(std::string_view joint) const {
    auto it = std::find_if(joints.begin(), joints.end(),
                           [&](const JointResult& j) { return j.name == joint; });
    if (it == joints.end())
        return std::nullopt;
    return Point2{it->x, it->y};
}

} // namespace dravik
