// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <optional>
#include <string>
#include <vector>

// Short texts that tell two values of one review entry apart in a merge dialog.
namespace dravik::merge {

std::string describe(const std::optional<JointEdit>& edit);
std::string describe(const std::vector<DetectionRetry>& retries);
std::string describe(const std::optional<LeanAnnotation>& annotation);
std::string describe(const std::optional<PairContext>& context);
std::string describe(const std::optional<LeanPairContext>& context);

} // namespace dravik::merge
