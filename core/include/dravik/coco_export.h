// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace dravik {

struct CocoExportOptions {
    bool uncertainAsOccluded = false; // uncertain joints as v = 1 (labelled, not visible), not 0
    bool includeUnreviewed = false;   // the detector's points too, as a category of their own
};

// A COCO person-keypoints file and what it holds, for a status line.
struct CocoExport {
    std::string text;
    std::size_t images = 0;
    std::size_t annotations = 0; // reviewed ones: one per frame with at least one reviewed joint
    std::size_t keypoints = 0;   // of those, the keypoints with v > 0

    // The file for a review: every photo is checked against its frame's content hash and its
    // size is read after EXIF orientation; photo names are relative to `output`'s folder when
    // possible. The same review and options give the same bytes.
    static CocoExport make(const ReviewDocument& document, const std::filesystem::path& manifest,
                           const std::filesystem::path& output, const CocoExportOptions& options);
    // make(), then written whole and durably. Refuses an `output` that is a file of the session
    // (manifest, results, a review, a companion file or a photo), writing nothing.
    static CocoExport write(const ReviewDocument& document, const std::filesystem::path& manifest,
                            const std::filesystem::path& results,
                            const std::filesystem::path& output, const CocoExportOptions& options);
};

} // namespace dravik
