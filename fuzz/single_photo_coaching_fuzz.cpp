// SPDX-License-Identifier: Apache-2.0
// "single-photo-coaching.json" against a fixed session.

#include "coaching_frames.h"
#include "dravik/coaching.h"
#include "fuzz_support.h"

#include <map>

namespace {

const std::vector<dravik::ReviewFrame> frames = fuzzing::coachingFrames();

std::map<std::string, dravik::SinglePhotoCoaching> decode(std::string_view text) {
    return dravik::SinglePhotoCoaching::decode(text, "single-photo-coaching.json", frames);
}

std::string encode(const std::map<std::string, dravik::SinglePhotoCoaching>& records) {
    std::vector<dravik::SinglePhotoCoaching> list;
    for (const auto& [frameID, record] : records)
        list.push_back(record);
    return dravik::SinglePhotoCoaching::encode(list);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(data, size, decode, encode);
    return 0;
}
