// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"
#include "dravik/review.h"
#include "photos/frame_photo.h"
#include "state/photo_state.h"

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tessary {

// Every frame's photo verified for opening (read once, hashed, its header checked; no pixels),
// on all cores. All or nothing: the first failure in document order is thrown.
PhotoState verifyPhotos(const dravik::ReviewDocument& document,
                        const std::filesystem::path& manifest, std::uint64_t budget);

// The file's stamp as it is now; none when it cannot be opened (decoding then says why).
std::optional<dravik::FileStamp> stampNow(const std::filesystem::path& file);

// Decodes a verified frame's panel at `scale`, on any thread. The file is stamped first: a file
// replaced in between fails its hash check, or is decoded again next time, and is never kept
// under a stamp that is not its own. Throws the core's "Cannot load …" sentence.
DecodedPhoto decodePhoto(const dravik::ReviewFrame& frame, const dravik::VerifiedPhoto& photo,
                         dravik::PhotoScale scale);

// The smallest scale that gives the panel `density` device pixels per source pixel.
dravik::PhotoScale scaleFor(const dravik::VerifiedPhoto& photo, double density);

// Device pixels per source pixel of the panel fitted into a full-HD pane: what a frame is
// decoded for before any canvas has said what it needs.
double fittedDensity(const dravik::VerifiedPhoto& photo);

} // namespace tessary
