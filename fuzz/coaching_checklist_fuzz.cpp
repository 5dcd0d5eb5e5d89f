// SPDX-License-Identifier: Apache-2.0
// "coaching-checklist.json" against a fixed session.

#include "coaching_frames.h"
#include "dravik/coaching.h"
#include "fuzz_support.h"

#include <map>

namespace {

const std::vector<dravik::ReviewFrame> frames = fuzzing::coachingFrames();

std::map<std::string, dravik::CoachingChecklistReview> decode(std::string_view text) {
    return dravik::CoachingChecklist::decode(text, "coaching-checklist.json", frames);
}

std::string encode(const std::map<std::string, dravik::CoachingChecklistReview>& reviews) {
    std::vector<dravik::CoachingChecklistReview> list;
    for (const auto& [subject, review] : reviews)
        list.push_back(review);
    return dravik::CoachingChecklist::encode(list, frames);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(data, size, decode, encode);
    return 0;
}
