// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "dravik/geometry.h"
#include "dravik/joints.h"
#include "dravik/lean.h"
#include "dravik/pairs.h"
#include "dravik/uuid.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravik {

// One photo of a session with its detections and the reviewer's edits.
struct ReviewFrame {
    std::string id;   // pairID + "/" + riderID
    std::string role; // "subject" or "reference"
    std::string riderDisplayName;
    std::string name; // the pair's title
    std::string file; // as the manifest gives it
    std::string sourceHash;
    ImageSize imageSize;
    PixelRect panel;
    PixelRect crop;
    std::string pairID;
    std::string riderID;
    std::vector<DravikResult> raw;          // from the results file, in file order
    std::vector<DetectionRetry> retries;    // accepted re-detections, oldest first
    std::map<std::string, JointEdit> edits; // by joint name
    bool operator==(const ReviewFrame&) const = default;

    // The reviewed point if the joint was edited (none when obscured), else the seed point.
    std::optional<Point2> displayPoint(std::string_view joint, std::string_view kind) const;
    // The detector's point before review: from the newest accepted retry with a usable result of
    // that kind, else the first usable raw result of that kind; when the frame has no usable result
    // of that kind at all, the same search over every kind.
    std::optional<Point2> seedPoint(std::string_view joint, std::string_view kind) const;
    // Like seedPoint, but never falls back to another kind.
    std::optional<Point2> rawPoint(std::string_view joint, std::string_view kind) const;
    std::optional<Point2> reviewedPoint(std::string_view joint) const;

    // Value operations; ReviewDocument wraps them so that its revision follows.
    void setJoint(const std::string& joint, std::optional<Point2> point, JointReviewState state);
    void restore(const std::string& joint, const std::optional<JointEdit>& edit);
    void addRetry(const DetectionRetry& retry);
};

// The persisted review of one session (one results file).
class ReviewDocument {
  public:
    ReviewDocument() = default;
    ReviewDocument(std::string identity, std::vector<ReviewFrame> frames,
                   std::int64_t revision = 0);

    // Revisions stay below this, so that raising one never overflows; a file holding a higher one
    // is refused when read.
    static constexpr std::int64_t maxRevision = std::int64_t{1} << 62;

    // "sha256:" + hex digest of the results file the document was made from.
    const std::string& identity() const { return identity_; }
    std::int64_t revision() const { return revision_; }
    const std::vector<ReviewFrame>& frames() const { return frames_; }
    // A number, unique in this process, that changes whenever frame `index` may have changed: two
    // documents whose frame carries the same stamp hold the same frame, so caches of what a frame
    // gives need not compare it whole.
    std::uint64_t frameStamp(std::size_t index) const { return frameStamps_.at(index); }
    const ReviewFrame* frame(std::string_view id) const;
    std::optional<std::size_t> frameIndex(std::string_view id) const;

    // Each raises the revision by one; a failure changes nothing.
    void setJoint(std::size_t frame, const std::string& joint, std::optional<Point2> point,
                  JointReviewState state);
    void restore(std::size_t frame, const std::string& joint, const std::optional<JointEdit>& edit);
    void addRetry(std::size_t frame, const DetectionRetry& retry);

    // Lean lines by frame id, and the reviewer's contexts by pair id. Storing or removing (none)
    // raises the revision by one; the caller validates first (LeanAnnotation::validate).
    const std::map<std::string, LeanAnnotation>& leanAnnotations() const {
        return leanAnnotations_;
    }
    const LeanAnnotation* leanAnnotation(std::string_view frameID) const;
    void setLeanAnnotation(const std::string& frameID,
                           const std::optional<LeanAnnotation>& annotation);
    const std::map<std::string, PairContext>& pairContexts() const { return pairContexts_; }
    const PairContext* pairContext(std::string_view pairID) const;
    void setPairContext(const std::string& pairID, const std::optional<PairContext>& context);
    const std::map<std::string, LeanPairContext>& leanPairContexts() const {
        return leanPairContexts_;
    }
    const LeanPairContext* leanPairContext(std::string_view pairID) const;
    void setLeanPairContext(const std::string& pairID,
                            const std::optional<LeanPairContext>& context);

    // The photo assessment of each pair, copied from the manifest when the document is made.
    const std::map<std::string, PairPhotoAssessment>& pairAssessments() const {
        return pairAssessments_;
    }
    void setPairAssessments(std::map<std::string, PairPhotoAssessment> assessments) {
        pairAssessments_ = std::move(assessments);
    }

    bool operator==(const ReviewDocument& other) const;
    // Equal in everything but the revision.
    bool sameContent(const ReviewDocument& other) const;

  private:
    ReviewFrame& mutableFrame(std::size_t index);
    void requireRaisable() const;

    std::string identity_;
    std::int64_t revision_ = 0;
    std::vector<ReviewFrame> frames_;
    std::vector<std::uint64_t> frameStamps_; // not content: equal documents may differ in them
    std::map<std::string, LeanAnnotation> leanAnnotations_;
    std::map<std::string, PairContext> pairContexts_;
    std::map<std::string, LeanPairContext> leanPairContexts_;
    std::map<std::string, PairPhotoAssessment> pairAssessments_;
};

// One joint of one frame, as prepared by a canvas of one session.
struct ReviewEditTarget {
    Uuid session;
    Uuid canvas;
    std::string frameID;
    std::string joint;
    bool operator==(const ReviewEditTarget&) const = default;

    // The frame's index only while session, canvas and visibility still match.
    std::optional<std::int64_t> index(const ReviewDocument& document, const Uuid& session,
                                      const Uuid& canvas,
                                      const std::vector<std::string>& visibleIDs) const;
};

// Source pixels to view points of a panel drawn at a scale, and back.
namespace ReviewCoordinates {
Point2 display(const Point2& source, const PixelRect& panel, double scale);
Point2 source(const Point2& view, const PixelRect& panel, double scale);
} // namespace ReviewCoordinates

} // namespace dravik
