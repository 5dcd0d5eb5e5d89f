// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <filesystem>
#include <string>

namespace dravik {

// The review a session opens with, as the window opens it.
struct SessionReview {
    ReviewDocument document;
    std::filesystem::path file; // where the session's review is saved: beside the manifest
    bool saved = false;         // the document was read from `file`
    std::string title;          // the session's title, from its manifest

    // The saved review when there is one, adopted (checked against the session and given the
    // manifest's photo assessments and names); else the unreviewed document.
    static SessionReview open(const std::filesystem::path& manifest,
                              const std::filesystem::path& results);
};

} // namespace dravik
