// SPDX-License-Identifier: Apache-2.0
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

// The people the frame's newest detection saw, for a reviewer to say which one is the rider.
struct RiderCandidates {
    std::vector<dravik::Candidate> seen; // everyone and every vehicle, as recorded
    std::vector<std::size_t> people;     // indexes into `seen`, in recorded order
    std::optional<std::size_t> rider;    // the person the detector chose
};
RiderCandidates riderCandidates(const dravik::ReviewFrame& frame);

// Where a retry looks for the person `person` of `seen`: their box joined with the vehicle they
// ride, grown by 15 % on every side (as the batch program grows a rider's area) and clipped to
// `panel`.
dravik::PixelRect riderArea(const std::vector<dravik::Candidate>& seen, std::size_t person,
                            const dravik::PixelRect& panel);

// The answer's results a reviewer can use: one rider found, with joints.
std::vector<const dravik::DravikResult*> usableResults(const dravik::DetectionRetry& retry);

} // namespace tessary
