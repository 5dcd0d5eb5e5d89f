// SPDX-License-Identifier: Apache-2.0
// "photo-framing.json" against a fixed session: decoded bounds must write back to the same.

#include "coaching_frames.h"
#include "dravik/framing.h"
#include "fuzz_support.h"

#include <map>

namespace {

const std::vector<dravik::ReviewFrame> frames = fuzzing::coachingFrames();

std::map<std::string, dravik::PixelRect> decode(std::string_view text) {
    return dravik::PhotoFramingRegion::decode(text, "photo-framing.json", frames);
}

std::string encode(const std::map<std::string, dravik::PixelRect>& bounds) {
    std::vector<dravik::PhotoFramingRegion> regions;
    for (const auto& [frameID, rect] : bounds)
        for (const dravik::ReviewFrame& frame : frames)
            if (frame.id == frameID)
                regions.push_back({frameID, frame.sourceHash, frame.panel, rect});
    return dravik::PhotoFramingRegion::encode(regions);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(data, size, decode, encode);
    return 0;
}
