// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/review.h"

#include <algorithm>
#include <atomic>

namespace dravik {

namespace {

std::uint64_t freshStamp() {
    static std::atomic<std::uint64_t> next{1};
    return next.fetch_add(1, std::memory_order_relaxed);
}

} // namespace

ReviewDocument::ReviewDocument(std::string identity, std::vector<ReviewFrame> frames,
                               std::int64_t revision)
    : identity_(std::move(identity)), revision_(revision), frames_(std::move(frames)),
      frameStamps_(frames_.size()) {
    std::generate(frameStamps_.begin(), frameStamps_.end(), freshStamp);
}

bool ReviewDocument::operator==(const ReviewDocument& other) const {
    return revision_ == other.revision_ && sameContent(other);
}

bool ReviewDocument::sameContent(const ReviewDocument& other) const {
    const auto sameFrames = [&] {
        if (frames_.size() != other.frames_.size())
            return false;
        for (std::size_t i = 0; i < frames_.size(); ++i)
            if (frameStamps_[i] != other.frameStamps_[i] && !(frames_[i] == other.frames_[i]))
                return false;
        return true;
    };
    return identity_ == other.identity_ && sameFrames() &&
           leanAnnotations_ == other.leanAnnotations_ && pairContexts_ == other.pairContexts_ &&
           leanPairContexts_ == other.leanPairContexts_ &&
           pairAssessments_ == other.pairAssessments_;
}

const ReviewFrame* ReviewDocument::frame(std::string_view id) const {
    auto index = frameIndex(id);
    return index ? &frames_[*index] : nullptr;
}

std::optional<std::size_t> ReviewDocument::frameIndex(std::string_view id) const {
    auto it = std::find_if(frames_.begin(), frames_.end(),
                           [&](const ReviewFrame& f) { return f.id == id; });
    if (it == frames_.end())
        return std::nullopt;
    return static_cast<std::size_t>(it - frames_.begin());
}

ReviewFrame& ReviewDocument::mutableFrame(std::size_t index) {
    if (index >= frames_.size())
        throw DravikError("The review has no frame number " + std::to_string(index + 1) + ".");
    requireRaisable();
    frameStamps_[index] = freshStamp();
    return frames_[index];
}

void ReviewDocument::requireRaisable() const {
    if (revision_ >= maxRevision - 1)
        throw DravikError("The review has reached its highest revision number.");
}

// The frame operations check everything before they change anything, so a failure leaves both
// the frame and the revision as they were.
void ReviewDocument::setJoint(std::size_t frame, const std::string& joint,
                              std::optional<Point2> point, JointReviewState state) {
    mutableFrame(frame).setJoint(joint, point, state);
    ++revision_;
}

void ReviewDocument::restore(std::size_t frame, const std::string& joint,
                             const std::optional<JointEdit>& edit) {
    mutableFrame(frame).restore(joint, edit);
    ++revision_;
}

void ReviewDocument::addRetry(std::size_t frame, const DetectionRetry& retry) {
    mutableFrame(frame).addRetry(retry);
    ++revision_;
}

} // namespace dravik
