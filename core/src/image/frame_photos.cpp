#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/parallel.h"
#include "dravik/review.h"
#include "dravik/store.h"

#include <functional>
#include <new>

namespace dravik {

namespace {

Image loadPanel(const ReviewFrame& frame, const std::filesystem::path& manifest) {
    // The photo's bytes live only inside this call, so each worker holds one file at a time.
    const ImageInput input = ImageInput::load(ReviewStore::assetURL(frame.file, manifest));
    if (input.sourceHash() != frame.sourceHash)
        throw DravikError("Source hash changed; reanalyze before applying corrections.");
    return input.cropped(frame.panel);
}

} // namespace

std::vector<Image> loadFramePhotos(const ReviewDocument& document,
                                   const std::filesystem::path& manifest) {
    const std::vector<ReviewFrame>& frames = document.frames();
    return parallelMap<Image>(frames.size(), [&](std::size_t index) {
        const ReviewFrame& frame = frames[index];
        auto failure = [&](const std::string& reason) {
            return DravikError("Cannot load " + frame.role + " photo (" + frame.file +
                               "): " + reason + " Previous selection preserved.");
        };
        try {
            return loadPanel(frame, manifest);
        } catch (const DravikError& error) {
            throw failure(error.message());
        } catch (const std::bad_alloc&) {
            throw failure("There is not enough memory to decode it.");
        }
    });
}

} // namespace dravik
