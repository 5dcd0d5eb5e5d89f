// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/pairs.h"

#include <optional>

namespace tessary {

class ReviewerModel;

// Marks a feature's joints on the canvas, under the report's turn direction.
void highlight(ReviewerModel& model, std::optional<dravik::PairFeature> feature);

} // namespace tessary
