// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/joints.h"
#include "dravik/lean.h"

#include <optional>
#include <string>
#include <variant>

namespace tessary {

// What undo puts back for one committed change.
struct ReviewUndo {
    struct Joint {
        std::string frameID;
        std::string joint;
        std::optional<dravik::JointEdit> previous; // none: the joint had no edit
        bool operator==(const Joint&) const = default;
    };
    // A line change also withdrew the pair's lean checks, so both come back together.
    struct Lean {
        std::string frameID;
        std::optional<dravik::LeanAnnotation> previous;
        std::optional<dravik::LeanPairContext> previousContext;
        bool operator==(const Lean&) const = default;
    };
    struct LeanContext {
        std::string frameID;
        std::optional<dravik::LeanPairContext> previous;
        bool operator==(const LeanContext&) const = default;
    };

    std::variant<Joint, Lean, LeanContext> change;
    bool operator==(const ReviewUndo&) const = default;

    const std::string& frameID() const {
        return std::visit([](const auto& c) -> const std::string& { return c.frameID; }, change);
    }
};

} // namespace tessary
