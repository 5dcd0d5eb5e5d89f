#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/store.h"
#include "image_conversion.h"
#include "reviewer_model.h"

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

std::pair<std::map<std::string, QImage>, std::vector<std::string>>
ReviewerModel::loadImages(const dravik::ReviewDocument& document,
                          const std::filesystem::path& manifest) const {
    // The core decodes on every core and reports the first failure in document order.
    const std::vector<dravik::Image> photos = dravik::loadFramePhotos(document, manifest);
    std::map<std::string, QImage> images;
    std::vector<std::string> ids;
    ids.reserve(photos.size());
    for (std::size_t index = 0; index < photos.size(); ++index) {
        const std::string& id = document.frames()[index].id;
        images.insert_or_assign(id, toQImage(photos[index]));
        ids.push_back(id);
    }
    return {std::move(images), std::move(ids)};
}

QImage ReviewerModel::loadImage(const dravik::ReviewFrame& frame,
                                const std::filesystem::path& manifest) const {
    const dravik::ReviewDocument single({}, {frame});
    return loadImages(single, manifest).first.at(frame.id);
}

ReviewerModel::Photos ReviewerModel::readPhotos(const dravik::ReviewDocument& document,
                                                const std::filesystem::path& manifest) const {
    // Stamped before decoding: a file replaced in between fails its hash check or is decoded
    // again next time, never reused under a stamp that does not belong to it.
    Photos photos;
    for (const dravik::ReviewFrame& frame : document.frames())
        if (auto stamp = frameStamp(frame, manifest))
            photos.stamps.emplace(frame.id, *stamp);
    photos.images = loadImages(document, manifest).first;
    return photos;
}

ReviewerModel::Photos ReviewerModel::imagesFor(const std::vector<std::string>& frameIDs) const {
    const dravik::ReviewDocument* current = document();
    if (!current || !manifestURL_)
        throw dravik::DravikError("No session is open.");
    Photos photos;
    std::vector<dravik::ReviewFrame> stale;
    for (const std::string& id : frameIDs) {
        const dravik::ReviewFrame* frame = current->frame(id);
        if (!frame)
            continue;
        auto shown = images_.find(id);
        auto stamp = imageStamps_.find(id);
        if (shown != images_.end() && stamp != imageStamps_.end()) {
            if (frameStamp(*frame, *manifestURL_) == stamp->second) {
                photos.images.emplace(id, shown->second);
                photos.stamps.emplace(id, stamp->second);
                continue;
            }
        }
        stale.push_back(*frame);
    }
    Photos decoded =
        readPhotos(dravik::ReviewDocument(current->identity(), std::move(stale)), *manifestURL_);
    photos.images.merge(decoded.images);
    photos.stamps.merge(decoded.stamps);
    return photos;
}

} // namespace tessary
