// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

// A review's file text in parts: the document around an empty frames array, and each frame's
// kept text, shared rather than copied. Together they are, byte for byte, one pretty dump of the
// whole tree.
struct ReviewText {
    std::string outline;
    std::vector<std::shared_ptr<const std::string>> frames;

    // The parts in file order; they point into this text.
    std::vector<std::string_view> pieces() const;
    std::string joined() const;
};

// Checks the document as the reader would, then gives its text.
ReviewText encodeReviewText(const ReviewDocument& document);

} // namespace dravik
