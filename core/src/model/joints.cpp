// SPDX-License-Identifier: Apache-2.0
#include "dravik/joints.h"

#include <algorithm>

namespace dravik {

namespace InspectionRenderer {

const std::vector<std::string>& jointNames() {
    static const std::vector<std::string> names = {
        "nose",          "left_eye",       "right_eye",  "left_ear",    "right_ear",
        "left_shoulder", "right_shoulder", "left_elbow", "right_elbow", "left_wrist",
        "right_wrist",   "left_hip",       "right_hip",  "left_knee",   "right_knee",
        "left_ankle",    "right_ankle",    "neck",       "pelvis"};
    return names;
}

const std::vector<std::pair<std::string, std::string>>& bones() {
    static const std::vector<std::pair<std::string, std::string>> list = {
        {"left_ear", "left_eye"},
        {"left_eye", "nose"},
        {"right_ear", "right_eye"},
        {"right_eye", "nose"},
        {"nose", "neck"},
        {"neck", "left_shoulder"},
        {"neck", "right_shoulder"},
        {"left_shoulder", "left_elbow"},
        {"left_elbow", "left_wrist"},
        {"right_shoulder", "right_elbow"},
        {"right_elbow", "right_wrist"},
        {"neck", "pelvis"},
        {"pelvis", "left_hip"},
        {"pelvis", "right_hip"},
        {"left_hip", "left_knee"},
        {"left_knee", "left_ankle"},
        {"right_hip", "right_knee"},
        {"right_knee", "right_ankle"}};
    return list;
}

std::optional<int> jointID(std::string_view name) {
    const auto& names = jointNames();
    auto it = std::find(names.begin(), names.end(), name);
    if (it == names.end())
        return std::nullopt;
    return static_cast<int>(it - names.begin());
}

} // namespace InspectionRenderer

std::string_view label(JointReviewState state) {
    switch (state) {
    case JointReviewState::corrected:
        return "Corrected";
    case JointReviewState::confirmedVisible:
        return "Confirmed visible";
    case JointReviewState::obscured:
        return "Obscured";
    case JointReviewState::uncertain:
        return "Uncertain";
    }
    return {};
}

std::string_view rawValue(JointReviewState state) {
    switch (state) {
    case JointReviewState::corrected:
        return "corrected";
    case JointReviewState::confirmedVisible:
        return "confirmedVisible";
    case JointReviewState::obscured:
        return "obscured";
    case JointReviewState::uncertain:
        return "uncertain";
    }
    return {};
}

std::optional<JointReviewState> jointReviewState(std::string_view raw) {
    for (JointReviewState state : allJointReviewStates)
        if (rawValue(state) == raw)
            return state;
    return std::nullopt;
}

} // namespace dravik
