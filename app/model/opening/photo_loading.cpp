#include "opening/photo_loading.h"

#include "dravik/image.h"
#include "dravik/store.h"
#include "opening/image_conversion.h"

namespace tessary {

namespace {

std::optional<PhotoStamp> frameStamp(const dravik::ReviewFrame& frame,
                                     const std::filesystem::path& manifest) {
    try {
        return stampOf(dravik::ReviewStore::assetURL(frame.file, manifest));
    } catch (const std::exception&) {
        return std::nullopt; // decoding reports the bad path in its own words
    }
}

} // namespace

FramePhotos loadPhotos(const std::vector<dravik::ReviewFrame>& frames, const std::string& identity,
                       const std::filesystem::path& manifest, const FramePhotos& reuse) {
    FramePhotos photos;
    std::vector<dravik::ReviewFrame> stale;
    for (const dravik::ReviewFrame& frame : frames) {
        // Stamped before decoding: a file replaced in between fails its hash check or is decoded
        // again next time, never reused under a stamp that does not belong to it.
        const auto stamp = frameStamp(frame, manifest);
        auto shown = reuse.images.find(frame.id);
        auto shownStamp = reuse.stamps.find(frame.id);
        if (stamp && shown != reuse.images.end() && shownStamp != reuse.stamps.end() &&
            shownStamp->second == *stamp) {
            photos.images.emplace(frame.id, shown->second);
            photos.stamps.emplace(frame.id, *stamp);
            continue;
        }
        if (stamp)
            photos.stamps.emplace(frame.id, *stamp);
        stale.push_back(frame);
    }
    // The core decodes on every core and reports the first failure in document order.
    const dravik::ReviewDocument decoding(identity, stale);
    const std::vector<dravik::Image> decoded = dravik::loadFramePhotos(decoding, manifest);
    for (std::size_t index = 0; index < decoded.size(); ++index)
        photos.images.insert_or_assign(stale[index].id, toQImage(decoded[index]));
    return photos;
}

} // namespace tessary
