#include "coaching/coaching_checklist_view.h"
#include "coaching/single_photo_feedback_view.h"
#include "dravik/coaching.h"
#include "model_fixture.h"
#include "panels_lookup.h"

#include <fstream>

namespace tessary::test {

namespace {

using namespace Qt::StringLiterals;

const QString automaticNote = u"Checklist added automatically. Photo-specific findings await "
                              u"visual review; no fault has been detected."_s;
const QString conflictNotice = u"Saved findings use a different turn direction. Restore the "
                               u"photo direction or reassess this checklist."_s;

QString heading(std::size_t assessed) {
    return u"Whole-body review · "_s + QString::number(assessed) + u" of "_s +
           QString::number(dravik::CoachingChecklist::catalog().size()) + u" topics assessed"_s;
}

QString row(const dravik::CoachingTopic& topic, dravik::CoachingReviewStatus status) {
    return QString::fromStdString(topic.title) + u" · "_s +
           QString::fromUtf8(dravik::label(status));
}

class CoachingPanelTest : public ModelTest {
  protected:
    // Saves checklist findings for turn 3, judged for `direction`, and opens the session.
    void openWithChecklist(dravik::CornerDirection direction) {
        const SessionFiles session = bundledSession(temp.path() / "checklist");
        dravik::CoachingChecklistReview review;
        review.subjectID = "turn-3";
        review.catalogVersion = std::string(dravik::CoachingChecklist::catalogVersion());
        review.cornerDirection = direction;
        review.statuses = {{topics[0].id, dravik::CoachingReviewStatus::practiceCueApplies},
                           {topics[2].id, dravik::CoachingReviewStatus::cannotAssess}};
        std::ofstream(session.folder / "coaching-checklist.json")
            << dravik::CoachingChecklist::encode({review}, session.raw().frames());
        model.load(session.manifest, session.results);
        ASSERT_EQ(model.error(), std::nullopt);
    }

    const std::vector<dravik::CoachingTopic>& topics = dravik::CoachingChecklist::catalog();
};

} // namespace

TEST_F(CoachingPanelTest, WithoutSavedFindingsEveryTopicIsUnassessedAndCuesAreListed) {
    openBundled();
    CoachingChecklistView view(model);
    view.show();
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, automaticNote));
    EXPECT_FALSE(showsText(view, conflictNotice));
    EXPECT_FALSE(showsText(view, row(topics[0], dravik::CoachingReviewStatus::notAssessed)));

    // Unfolded, the full list has a cue line for every topic with a cue and none for the others.
    auto* all = buttonNamed(view, u"All topics and practice cues"_s);
    ASSERT_NE(all, nullptr);
    all->click();
    const QStringList texts = visibleTexts(view);
    std::size_t withCue = 0;
    for (const dravik::CoachingTopic& topic : topics) {
        EXPECT_TRUE(texts.contains(row(topic, dravik::CoachingReviewStatus::notAssessed)));
        withCue += topic.cue.empty() ? 0 : 1;
    }
    ASSERT_LT(withCue, topics.size()); // the catalogue has a topic without a cue
    EXPECT_EQ(texts.filter(u"Review cue: "_s).size(), static_cast<qsizetype>(withCue));
}

TEST_F(CoachingPanelTest, SavedFindingsListOnlyAssessedTopicsUntilTheDirectionDisagrees) {
    openWithChecklist(dravik::CornerDirection::left);
    model.setCompare(true);
    CoachingChecklistView view(model);
    view.show();
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(2));
    EXPECT_FALSE(showsText(view, automaticNote));
    EXPECT_TRUE(showsText(view, row(topics[0], dravik::CoachingReviewStatus::practiceCueApplies)));
    EXPECT_TRUE(showsText(view, row(topics[2], dravik::CoachingReviewStatus::cannotAssess)));

    // Overriding the direction withholds the findings made for the photos' direction.
    dravik::PairContext context = model.report()->context;
    context.directionOverride = dravik::CornerDirection::right;
    model.updateContext(context);
    EXPECT_TRUE(showsText(view, conflictNotice));
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, automaticNote));
}

TEST_F(CoachingPanelTest, SinglePhotoFeedbackShowsTheRecordOrSaysThereIsNone) {
    const SessionFiles session = bundledSession(temp.path() / "single");
    model.load(session.manifest, session.results);
    model.selectFrame(indexOf(alex5));
    SinglePhotoFeedbackView view(model);
    view.show();
    const QString limitation = u"A still photo cannot establish grip pressure, hidden joint "
                               u"positions, braking or acceleration timing, or a precise "
                               u"body-position target."_s;
    EXPECT_TRUE(showsText(view, u"No provisional photo assessment has been added for this image "
                                u"yet."_s));
    EXPECT_EQ(textStartingWith(view, u"Whole-body review"_s), heading(0));
    EXPECT_TRUE(showsText(view, limitation));

    dravik::SinglePhotoCoaching record;
    record.frameID = alex5;
    record.sourceHash = frameOf(alex5).sourceHash;
    record.observations = {"Head turned towards the exit.", "Outside knee off the tank."};
    record.assessmentBasis = {"One side-on photo."};
    std::ofstream(session.folder / "single-photo-coaching.json")
        << dravik::SinglePhotoCoaching::encode({record});
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    model.selectFrame(indexOf(alex5));
    ASSERT_NE(model.currentSinglePhotoCoaching(), nullptr);
    const QStringList texts = visibleTexts(view);
    const qsizetype first = texts.indexOf(u"• Head turned towards the exit."_s);
    ASSERT_GE(first, 0);
    EXPECT_EQ(texts.value(first + 1), u"• Outside knee off the tank."_s);
    EXPECT_FALSE(texts.contains(u"No provisional photo assessment has been added for this image "
                                u"yet."_s));
    EXPECT_FALSE(texts.contains(u"One side-on photo."_s)); // folded away until asked for
    buttonNamed(view, u"Assessment basis"_s)->click();
    EXPECT_TRUE(showsText(view, u"One side-on photo."_s));
    EXPECT_TRUE(showsText(view, limitation));

    // Another photo has its own record, here none.
    model.selectFrame(indexOf(alex3));
    EXPECT_FALSE(showsText(view, u"• Head turned towards the exit."_s));
}

} // namespace tessary::test
