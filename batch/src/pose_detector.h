#pragma once

#include "dravik/detection.h"
#include "dravik/image.h"
#include "pose_worker.h"
#include "square_region.h"

#include <cstdint>
#include <optional>

namespace dravik::batch {

// Keypoints this confident count when framing the body or guessing that a rider is present.
inline constexpr double confidentScore = 0.25;

// The worker's keypoints as a 2D result in photo pixels, named like the review joints, with neck
// and pelvis added as midpoints. `count` decides the status: exactly one rider needs review.
DravikResult resultFromAnswer(const WorkerAnswer& answer, const SquareRegion& region,
                              std::int64_t count);

// Riders in the square: the multi-person model's count, except that a square where it sees nobody
// but the single-person model is confident on average still holds one rider.
std::int64_t riderCount(const WorkerAnswer& answer);

// A tighter crop around the body found by a first pass, inside the photo; none when too few
// joints were seen to frame a body.
std::optional<PixelRect> refinedCrop(const DravikResult& first, ImageSize photo);

// Runs the worker on crops of photos.
class PoseDetector {
  public:
    explicit PoseDetector(PoseWorker& worker) : worker_(worker) {}

    // A pass on `crop` (photo pixels), counting the people in it.
    DravikResult detect(const ImageInput& photo, const PixelRect& crop, const std::string& label);

    struct TwoPasses {
        DravikResult primary;
        std::optional<DravikResult> refined;
        std::optional<PixelRect> refinedCrop;
    };
    // The pass on `crop`, then one on a tighter crop around what it found, which may leave out
    // bystanders the first crop held.
    TwoPasses detectTwice(const ImageInput& photo, const PixelRect& crop, const std::string& label);

  private:
    PoseWorker& worker_;
};

} // namespace dravik::batch
