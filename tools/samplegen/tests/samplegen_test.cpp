// SPDX-License-Identifier: Apache-2.0
#include "dravik/analysis.h"
#include "dravik/coaching.h"
#include "dravik/detection.h"
#include "dravik/error.h"
#include "dravik/framing.h"
#include "dravik/image.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/pairs.h"
#include "dravik/store.h"
#include "samplegen.h"
#include "test_support.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <string>

namespace fs = std::filesystem;
namespace sg = tessary::samplegen;
using dravik::test::readText;
using dravik::test::TempDir;

namespace {

const fs::path committedSample = fs::path(TESSARY_SOURCE_DIR) / "data" / "sample-session";

constexpr const char* bundledFiles[] = {"turn-3-alex.jpg",        "turn-3-sam.jpg",
                                        "turn-5-alex.jpg",        "session.json",
                                        "results.json",           "lean-proposals.json",
                                        "photo-framing.json",     "single-photo-coaching.json",
                                        "coaching-checklist.json"};

// What must hold for any generated session: the core opens it, every photo is the one the
// manifest names, and the detections sit inside the rider's crop within the panel.
dravik::ReviewDocument expectOpens(const fs::path& folder) {
    const fs::path manifest = folder / "session.json";
    const dravik::ReviewDocument document =
        dravik::ReviewStore::make(manifest, folder / "results.json");
    for (const dravik::ReviewFrame& frame : document.frames()) {
        SCOPED_TRACE(frame.id);
        const auto photo =
            dravik::ImageInput::load(dravik::ReviewStore::assetURL(frame.file, manifest));
        EXPECT_EQ(photo.sourceHash(), frame.sourceHash);
        EXPECT_EQ(photo.size(), frame.imageSize);
        const dravik::PixelRect whole{0, 0, static_cast<double>(frame.imageSize.width),
                                      static_cast<double>(frame.imageSize.height)};
        EXPECT_TRUE(whole.contains(frame.panel));
        EXPECT_TRUE(frame.panel.contains(frame.crop));
        EXPECT_EQ(frame.raw.size(), 2u);
        if (frame.raw.size() != 2u)
            continue;
        EXPECT_EQ(frame.raw[0].kind, "3D");
        EXPECT_EQ(frame.raw[1].kind, "2D");
        for (const dravik::DravikResult& result : frame.raw) {
            EXPECT_TRUE(result.usable());
            for (const dravik::JointResult& j : result.joints) {
                EXPECT_TRUE(frame.crop.contains(dravik::Point2{j.x, j.y}))
                    << result.kind << " " << j.name;
                EXPECT_GE(j.confidence, 0.1);
                EXPECT_LE(j.confidence, 0.99);
            }
        }
    }
    return document;
}

} // namespace

TEST(SampleSession, CommittedSampleOpensWithItsDeliberateGaps) {
    const dravik::ReviewDocument document = expectOpens(committedSample);

    ASSERT_EQ(document.frames().size(), 3u);
    EXPECT_EQ(document.frames()[1].role, "reference");
    const auto pairs = dravik::PairReview::resolve(document.frames());
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_EQ(pairs[0].frameIDs.size(), 2u);
    EXPECT_EQ(pairs[1].frameIDs.size(), 1u);
    std::size_t found = 0;
    for (const auto& frame : document.frames()) {
        EXPECT_EQ(frame.panel, (dravik::PixelRect{0, 0, 1200, 800}));
        for (const auto& result : frame.raw)
            found += result.joints.size();
    }
    EXPECT_EQ(found, 3u * 2u * 19u - 1u) << "exactly one joint is missing";

    const dravik::ReviewFrame* gap = document.frame(sg::bundledMissingFrame);
    const dravik::ReviewFrame* doubtful = document.frame(sg::bundledDoubtfulFrame);
    ASSERT_TRUE(gap && doubtful);
    const std::string missing(sg::bundledMissingJoint);
    EXPECT_FALSE(gap->rawPoint(missing, sg::bundledMissingKind));
    EXPECT_TRUE(gap->rawPoint(missing, "3D"));
    double confidence = 0;
    for (const auto& result : doubtful->raw)
        for (const auto& j : result.joints)
            if (result.kind == sg::bundledDoubtfulKind && j.name == sg::bundledDoubtfulJoint)
                confidence = j.confidence;
    EXPECT_EQ(confidence, sg::bundledDoubtfulConfidence);

    // The turn-3 pair carries the photo coaching; the lone turn-5 photo has none.
    ASSERT_EQ(document.pairAssessments().size(), 1u);
    const dravik::PairPhotoAssessment& assessment = document.pairAssessments().at("turn-3");
    EXPECT_EQ(assessment.direction, dravik::CornerDirection::left);
    EXPECT_EQ(assessment.coaching.size(), 2u);
}

// The committed sample is exactly what the generator writes with the default options, so a
// change to the generator shows up here until the sample is regenerated.
TEST(SampleSession, CommittedSampleIsTheGeneratorsOutput) {
    const TempDir fresh;
    sg::writeSession(fresh.path(), {.bundled = true});
    for (const char* name : bundledFiles) {
        SCOPED_TRACE(name);
        EXPECT_EQ(readText(committedSample / name), readText(fresh / name));
    }
}

TEST(SampleSession, LargeSessionsAreUnpairedPhotosWithACentredPanelDrawnFromTheSeed) {
    const TempDir folder, other;
    sg::writeSession(folder.path(), {.photos = 3, .megapixels = 0.3, .seed = 11});
    const dravik::ReviewDocument document = expectOpens(folder.path());
    ASSERT_EQ(document.frames().size(), 3u);
    EXPECT_EQ(dravik::PairReview::resolve(document.frames()).size(), 3u);
    const dravik::ImageSize size = sg::photoSize(0.3);
    EXPECT_NEAR(size.width * size.height, 300000, 3000);
    EXPECT_NEAR(size.width, size.height * 1.5, 2);
    EXPECT_EQ(sg::photoSize(24), (dravik::ImageSize{6000, 4000}));
    for (const auto& frame : document.frames()) {
        SCOPED_TRACE(frame.id);
        EXPECT_EQ(frame.role, "subject");
        EXPECT_EQ(frame.imageSize, size);
        const double area = frame.panel.width * frame.panel.height;
        EXPECT_NEAR(area / (size.width * size.height), 0.6, 0.01);
        EXPECT_NEAR(frame.panel.x * 2 + frame.panel.width, size.width, 1);
        EXPECT_NEAR(frame.panel.y * 2 + frame.panel.height, size.height, 1);
    }
    // Sameness for one seed is what the committed sample proves; another seed must differ.
    sg::writeSession(other.path(), {.photos = 1, .megapixels = 0.3, .seed = 12});
    EXPECT_NE(readText(folder / "photo-001.jpg"), readText(other / "photo-001.jpg"));

    EXPECT_THROW(sg::writeSession(other.path(), {.photos = 0}), dravik::DravikError);
    EXPECT_THROW(sg::writeSession(other.path(), {.megapixels = 0}), dravik::DravikError);
}

// The companion files are what a reviewer finds beside the photos: each loads through the core
// against the session's frames, and together they exercise the panels that read them.
TEST(SampleSession, CompanionFilesLoadAgainstTheSession) {
    // The committed sample is the generator's output (see above), so it stands in for a fresh one.
    const fs::path folder = committedSample;
    const dravik::ReviewDocument raw =
        dravik::ReviewStore::make(folder / "session.json", folder / "results.json");
    const auto& frames = raw.frames();

    const auto proposals = dravik::loadLeanProposals(folder / "lean-proposals.json");
    ASSERT_EQ(proposals.size(), 3u);
    for (const dravik::LeanAnnotation& proposal : proposals) {
        SCOPED_TRACE(proposal.frameID);
        const dravik::ReviewFrame& frame = *raw.frame(proposal.frameID);
        EXPECT_NO_THROW(proposal.validate(frame));
        EXPECT_NE(proposal.provenance, dravik::reviewerProvenance);
        EXPECT_FALSE(proposal.wheelReviewed || proposal.referenceReviewed);
        const auto measured = dravik::LeanAnalysis::measure(proposal);
        ASSERT_TRUE(measured);
        // The drawn motorcycles lean hard; a proposal that stood upright would be wrong.
        EXPECT_GT(std::abs(measured->angle), 15.0);
        EXPECT_LT(std::abs(measured->angle), 75.0);
        // The wheel axis runs from the contact point up through the drawn wheel.
        EXPECT_LT(proposal.wheel->b.y, proposal.wheel->a.y);
    }

    const auto framing = dravik::PhotoFramingRegion::load(folder / "photo-framing.json", frames);
    ASSERT_EQ(framing.size(), 3u);
    for (const dravik::LeanAnnotation& proposal : proposals) {
        const dravik::PixelRect& bounds = framing.at(proposal.frameID);
        EXPECT_TRUE(bounds.contains(raw.frame(proposal.frameID)->crop)) << proposal.frameID;
        EXPECT_TRUE(bounds.contains(proposal.wheel->a) && bounds.contains(proposal.wheel->b));
    }

    const auto notes =
        dravik::SinglePhotoCoaching::load(folder / "single-photo-coaching.json", frames);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_FALSE(notes.at("turn-5/alex").observations.empty());

    const auto checklists =
        dravik::CoachingChecklist::load(folder / "coaching-checklist.json", frames);
    ASSERT_EQ(checklists.size(), 1u);
    const auto rows = dravik::CoachingChecklist::rows(checklists.at("turn-3"));
    const auto assessed = std::count_if(rows.begin(), rows.end(), [](const auto& row) {
        return row.status != dravik::CoachingReviewStatus::notAssessed;
    });
    EXPECT_GT(assessed, 0);
    EXPECT_LT(assessed, static_cast<long>(rows.size()));

    const auto pairs = dravik::PairReview::resolve(frames);
    const dravik::PairReport report =
        dravik::PairAnalysis::analyze(raw, pairs.front(), dravik::RuleCatalog::production());
    EXPECT_TRUE(report.hasPhotoCoaching);
}
