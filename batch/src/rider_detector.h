// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "dravik/image.h"
#include "pose_worker.h"

#include <optional>
#include <string>

namespace dravik::batch {

// What one detection found: the first pass decides the status; the refined pass may only make the
// rider's joints more confident.
struct Detection {
    DravikResult primary;
    std::optional<DravikResult> refined;
    // Where the rider (and what they ride) is, for a later retry; none without a rider.
    std::optional<PixelRect> riderArea;
};

// The one pipeline behind every detection, a folder's and a retry's alike: find everyone and every
// two-wheeler in `area`, choose the rider, turn their crop upright and detect their joints, coarse
// then fine. docs/batch.md tells the steps and their thresholds.
class RiderDetector {
  public:
    explicit RiderDetector(PoseWorker& worker) : worker_(worker) {}

    // `lean`: the rider's lean when something other than the photo tells it (a wheel axis drawn
    // or proposed), as wheelLean measures it. `label` names the photo in messages.
    Detection detect(const ImageInput& photo, const PixelRect& area, const std::string& label,
                     std::optional<double> lean = std::nullopt);

  private:
    PoseWorker& worker_;
};

} // namespace dravik::batch
