// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/image.h"
#include "photos/frame_photo.h"
#include "photos/photo_cache.h"

#include <map>
#include <set>
#include <string>

namespace tessary {

// The open session's photos: how each was verified at opening, the decoded pictures, the ones on
// screen, and the decodes asked for. Replaced whole when another session opens.
struct PhotoState {
    std::map<std::string, dravik::VerifiedPhoto> verified;
    PhotoCache cache;
    std::map<std::string, FramePhoto> shown; // the frames on screen
    // Device pixels per source pixel each frame's canvas last asked for.
    std::map<std::string, double> density;
    // Background decodes waiting or running, by the scale asked for.
    std::map<std::string, dravik::PhotoScale> decoding;
    // Frames whose background decode failed; tried again only once they have been shown.
    std::set<std::string> refused;
};

} // namespace tessary
