#pragma once

#include "dravik/detection.h"
#include "dravik/review.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace tessary {

// The retry request for a frame's rider photo, on its full panel or its rider crop; none when the
// manifest no longer lists the frame's pair or rider.
std::optional<dravik::RetryRequest> retryRequestFor(const dravik::ReviewFrame& frame,
                                                    const std::filesystem::path& manifest,
                                                    bool fullPhoto);

// The answer's results a reviewer can use: one rider found, with joints.
std::vector<const dravik::DravikResult*> usableResults(const dravik::DetectionRetry& retry);

} // namespace tessary
