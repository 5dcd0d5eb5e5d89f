#include "dravik/session_review.h"

#include "dravik/store.h"

namespace dravik {

SessionReview SessionReview::open(const std::filesystem::path& manifest,
                                  const std::filesystem::path& results) {
    ReviewDocument raw = ReviewStore::make(manifest, results);
    SessionReview review{raw, manifest.parent_path() / ReviewStore::reviewFileName(raw), false};
    std::error_code error;
    if (std::filesystem::exists(review.file, error)) {
        review.document = ReviewStore::adopt(ReviewStore::load(review.file), raw, review.file);
        review.saved = true;
    }
    return review;
}

} // namespace dravik
