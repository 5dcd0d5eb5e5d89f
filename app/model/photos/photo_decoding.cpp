// SPDX-License-Identifier: Apache-2.0
#include "photos/photo_decoding.h"

#include "photos/image_conversion.h"

#include <algorithm>
#include <cmath>

namespace tessary {

PhotoState verifyPhotos(const dravik::ReviewDocument& document,
                        const std::filesystem::path& manifest, std::uint64_t budget) {
    PhotoState photos{{}, PhotoCache(budget), {}, {}, {}, {}};
    std::vector<dravik::VerifiedPhoto> verified = dravik::verifyFramePhotos(document, manifest);
    for (std::size_t index = 0; index < verified.size(); ++index)
        photos.verified.emplace(document.frames()[index].id, std::move(verified[index]));
    return photos;
}

std::optional<dravik::FileStamp> stampNow(const std::filesystem::path& file) {
    try {
        dravik::FileStamp stamp;
        dravik::openForReading(file, &stamp);
        return stamp;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

DecodedPhoto decodePhoto(const dravik::ReviewFrame& frame, const dravik::VerifiedPhoto& photo,
                         dravik::PhotoScale scale) {
    const auto stamp = stampNow(photo.file);
    dravik::ScaledPanel panel = dravik::decodeFramePhoto(frame, photo, scale);
    // Without a stamp the picture matches no file, so it is decoded again next time.
    return {{toQImage(panel.image), panel.covers, panel.scale},
            stamp.value_or(dravik::FileStamp{})};
}

dravik::PhotoScale scaleFor(const dravik::VerifiedPhoto& photo, double density) {
    // A hundredth of a pixel short still covers: the canvas's own size was rounded.
    auto side = [&](double pixels) {
        return static_cast<int>(std::min(std::ceil(pixels * density - 0.01), 1e9));
    };
    return dravik::scaleCovering(photo, {side(photo.panel.width), side(photo.panel.height)});
}

double fittedDensity(const dravik::VerifiedPhoto& photo) {
    constexpr double paneWidth = 1920;
    constexpr double paneHeight = 1200;
    return std::min(paneWidth / std::max(photo.panel.width, 1.0),
                    paneHeight / std::max(photo.panel.height, 1.0));
}

} // namespace tessary
