// SPDX-License-Identifier: Apache-2.0
#include "dravik/session_review.h"

#include "dravik/store.h"

namespace dravik {

SessionReview SessionReview::open(const std::filesystem::path& manifest,
                                  const std::filesystem::path& results) {
    const SessionManifest decoded = SessionManifest::load(manifest);
    ReviewDocument raw = ReviewStore::make(decoded, manifest, results);
    SessionReview review{raw, manifest.parent_path() / ReviewStore::reviewFileName(raw), false,
                         decoded.title};
    std::error_code error;
    if (std::filesystem::exists(review.file, error)) {
        review.document = ReviewStore::adopt(ReviewStore::load(review.file), raw, review.file);
        review.saved = true;
    }
    return review;
}

} // namespace dravik
