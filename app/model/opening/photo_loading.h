#pragma once

#include "dravik/review.h"
#include "opening/photo_stamp.h"

#include <QImage>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tessary {

// Decoded photos by frame id, with the stamps of the files they came from.
struct FramePhotos {
    std::map<std::string, QImage> images;
    std::map<std::string, PhotoStamp> stamps;
};

// The cropped photo of each of `frames`, decoded on every core; all or nothing, the first failure
// in their order wins. A photo of `reuse` whose file still has its stamp is not decoded again.
FramePhotos loadPhotos(const std::vector<dravik::ReviewFrame>& frames, const std::string& identity,
                       const std::filesystem::path& manifest, const FramePhotos& reuse = {});

} // namespace tessary
