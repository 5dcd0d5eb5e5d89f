// SPDX-License-Identifier: Apache-2.0
#include "coaching/coaching_checklist_view.h"
#include "coaching/single_photo_feedback_view.h"
#include "dravik/coaching.h"
#include "views_fixture.h"

namespace tessary::test {

namespace {

using namespace Qt::StringLiterals;
using dravik::CoachingReviewStatus;

const QString automaticNote = u"Checklist added automatically. Photo-specific findings await "
                              u"visual review; no fault has been detected."_s;
const QString conflictNotice = u"Saved findings use a different turn direction. Restore the "
                               u"photo direction or reassess this checklist."_s;
const std::vector<dravik::CoachingTopic>& topics = dravik::CoachingChecklist::catalog();

QString heading(std::size_t assessed) {
    return u"Whole-body review · "_s + QString::number(assessed) + u" of "_s +
           QString::number(topics.size()) + u" topics assessed"_s;
}

QString row(const dravik::CoachingTopic& topic, CoachingReviewStatus status) {
    return QString::fromStdString(topic.title) + u" · "_s +
           QString::fromUtf8(dravik::label(status));
}

using CoachingPanelTest = ModelTest;

} // namespace

TEST_F(CoachingPanelTest, TheChecklistListsAssessedTopicsUntilTheDirectionDisagrees) {
    openBundled();
    CoachingChecklistView view(model);
    view.show();
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, automaticNote));
    EXPECT_FALSE(showsText(view, conflictNotice));
    EXPECT_FALSE(showsText(view, row(topics[0], CoachingReviewStatus::notAssessed)));
    // Unfolded, every topic is listed and only those with a cue have a cue line.
    buttonNamed(view, u"All topics and practice cues"_s)->click();
    const QStringList texts = visibleTexts(view);
    std::size_t withCue = 0;
    for (const dravik::CoachingTopic& topic : topics) {
        EXPECT_TRUE(texts.contains(row(topic, CoachingReviewStatus::notAssessed)));
        withCue += topic.cue.empty() ? 0 : 1;
    }
    ASSERT_LT(withCue, topics.size());
    EXPECT_EQ(texts.filter(u"Review cue: "_s).size(), static_cast<qsizetype>(withCue));

    // Findings for turn 3, saved for its left turn.
    const SessionFiles session = bundledSession(temp.path() / "checklist");
    dravik::CoachingChecklistReview review;
    review.subjectID = "turn-3";
    review.catalogVersion = std::string(dravik::CoachingChecklist::catalogVersion());
    review.cornerDirection = dravik::CornerDirection::left;
    review.statuses = {{topics[0].id, CoachingReviewStatus::practiceCueApplies},
                       {topics[2].id, CoachingReviewStatus::cannotAssess}};
    writeText(session.folder / "coaching-checklist.json",
              dravik::CoachingChecklist::encode({review}, session.raw().frames()));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    model.setCompare(true);
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(2));
    EXPECT_FALSE(showsText(view, automaticNote));
    EXPECT_TRUE(showsText(view, row(topics[0], CoachingReviewStatus::practiceCueApplies)));
    EXPECT_TRUE(showsText(view, row(topics[2], CoachingReviewStatus::cannotAssess)));

    dravik::PairContext context = model.report()->context;
    context.directionOverride = dravik::CornerDirection::right;
    model.updateContext(context);
    EXPECT_TRUE(showsText(view, conflictNotice));
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, automaticNote));
}

TEST_F(CoachingPanelTest, SinglePhotoFeedbackShowsThePhotosRecordOrSaysThereIsNone) {
    const SessionFiles session = bundledSession(temp.path() / "single");
    model.load(session.manifest, session.results);
    model.selectFrame(indexOf(alex5));
    SinglePhotoFeedbackView view(model);
    view.show();
    const QString none = u"No provisional photo assessment has been added for this image yet."_s;
    const QString limitation = u"A still photo cannot establish grip pressure, hidden joint "
                               u"positions, braking or acceleration timing, or a precise "
                               u"body-position target."_s;
    EXPECT_TRUE(showsText(view, none));
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, limitation));

    dravik::SinglePhotoCoaching record;
    record.frameID = alex5;
    record.sourceHash = frameOf(alex5).sourceHash;
    record.observations = {"Head turned towards the exit.", "Outside knee off the tank."};
    record.assessmentBasis = {"One side-on photo."};
    writeText(session.folder / "single-photo-coaching.json",
              dravik::SinglePhotoCoaching::encode({record}));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    model.selectFrame(indexOf(alex5));
    const QStringList texts = visibleTexts(view);
    const qsizetype first = texts.indexOf(u"• Head turned towards the exit."_s);
    ASSERT_GE(first, 0);
    EXPECT_EQ(texts.value(first + 1), u"• Outside knee off the tank."_s);
    EXPECT_FALSE(texts.contains(none));
    EXPECT_FALSE(texts.contains(u"One side-on photo."_s)); // folded away until asked for
    buttonNamed(view, u"Assessment basis"_s)->click();
    EXPECT_TRUE(showsText(view, u"One side-on photo."_s));
    EXPECT_TRUE(showsText(view, limitation));

    // Another photo has its own record, here none.
    model.selectFrame(indexOf(alex3));
    EXPECT_FALSE(showsText(view, u"• Head turned towards the exit."_s));

    // Files that no longer load are named in the panels, not passed off as never written.
    writeText(session.folder / "single-photo-coaching.json", "{\"format\": 1}");
    writeText(session.folder / "coaching-checklist.json", "[]");
    model.load(session.manifest, session.results);
    model.selectFrame(indexOf(alex5));
    EXPECT_TRUE(showsText(view, u"Saved photo notes could not be loaded or did not match this "
                                u"session. Coaching is withheld until the notes are corrected."_s));
    EXPECT_TRUE(showsText(view, u"Saved checklist findings do not match this session or catalog. "
                                u"Topics need review again."_s));
    EXPECT_FALSE(showsText(view, none));
}

} // namespace tessary::test
