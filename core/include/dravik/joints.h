// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravik {

// The skeleton: 17 COCO keypoints in COCO order, then neck and pelvis.
namespace InspectionRenderer {
const std::vector<std::string>& jointNames();
const std::vector<std::pair<std::string, std::string>>& bones();
// Position of the name in jointNames(), so reviewed data maps straight onto COCO ids.
std::optional<int> jointID(std::string_view name);
} // namespace InspectionRenderer

enum class JointReviewState { corrected, confirmedVisible, obscured, uncertain };

inline constexpr JointReviewState allJointReviewStates[] = {
    JointReviewState::corrected, JointReviewState::confirmedVisible, JointReviewState::obscured,
    JointReviewState::uncertain};

std::string_view label(JointReviewState state);
std::string_view rawValue(JointReviewState state);
std::optional<JointReviewState> jointReviewState(std::string_view rawValue);

struct JointEdit {
    JointReviewState state = JointReviewState::corrected;
    std::optional<Point2> point;
    bool operator==(const JointEdit&) const = default;
};

} // namespace dravik
