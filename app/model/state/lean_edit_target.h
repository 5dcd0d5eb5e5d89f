// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/uuid.h"

#include <string>

namespace tessary {

// The lean lines of one frame, as prepared by a canvas of one session.
struct LeanEditTarget {
    dravik::Uuid session;
    dravik::Uuid canvas;
    std::string frameID;
    bool operator==(const LeanEditTarget&) const = default;
};

} // namespace tessary
