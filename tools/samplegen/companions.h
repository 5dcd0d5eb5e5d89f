// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/review.h"

#include <map>
#include <string>
#include <vector>

namespace tessary::samplegen {

// The front wheel's upright axis in a photo, from the scene it was drawn from.
struct WheelAxis {
    dravik::Point2 contact;
    dravik::Point2 top;
};

struct CompanionFile {
    std::string name;
    std::string text;
};

// The bundled sample's companion files, written through the core's own encoders so they are
// exactly what the core accepts: draft lean lines, framing regions (rider and front wheel),
// single-photo coaching for the lone photo and a partly filled checklist for the pair.
std::vector<CompanionFile> bundledCompanions(const dravik::ReviewDocument& raw,
                                             const std::map<std::string, WheelAxis>& wheels);

} // namespace tessary::samplegen
