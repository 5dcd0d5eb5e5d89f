// SPDX-License-Identifier: Apache-2.0
#include "common/text_button.h"
#include "common/text_format.h"
#include "dravik/framing.h"
#include "pair/frame_pane.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "views_fixture.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSlider>

namespace tessary::test {

namespace {

using namespace Qt::StringLiterals;

std::vector<std::string> visiblePanes(const QWidget& view) {
    QCoreApplication::sendPostedEvents();
    std::vector<std::string> frames;
    for (FramePane* pane : view.findChildren<FramePane*>())
        if (pane->isVisibleTo(&view))
            frames.push_back(pane->frameID());
    return frames;
}

std::set<std::string> insideElbow() {
    const auto joints =
        dravik::joints(dravik::PairFeature::insideElbow, dravik::CornerDirection::left);
    return {joints.begin(), joints.end()};
}

class PairPanelTest : public ModelTest {
  protected:
    // The sample in compare mode with its feedback panel shown.
    void showFeedback() {
        model.setCompare(true);
        ASSERT_NE(model.report(), nullptr);
        feedback = std::make_unique<PairFeedbackView>(model);
        feedback->show();
    }
    std::unique_ptr<PairFeedbackView> feedback;
};

} // namespace

// A rounded value keeps the sign of what was measured, even when it rounds to zero.
TEST_F(PairPanelTest, NumbersKeepTheirSignAndOneDecimalOfZoom) {
    EXPECT_EQ(signedWhole(3.4), u"+3"_s);
    EXPECT_EQ(signedWhole(-0.4), u"-0"_s);
    EXPECT_EQ(signedWhole(-12.6), u"-13"_s);
    EXPECT_EQ(zoomText(2.5), u"2.5×"_s);
    EXPECT_EQ(zoomText(1.0), u"1.0×"_s);
}

TEST_F(PairPanelTest, PanesFollowTheActivePairAndOnlyTheActiveOneIsMarked) {
    PairComparisonView view(model);
    view.show();
    EXPECT_TRUE(visiblePanes(view).empty());
    openBundled();
    model.setCompare(true);
    EXPECT_EQ(visiblePanes(view), (std::vector{alex3, sam3}));
    const QList<FramePane*> panes = view.findChildren<FramePane*>();
    EXPECT_NE(buttonNamed(*panes[0], u"Alex · active"_s), nullptr);
    QTest::mouseClick(buttonNamed(*panes[1], u"Sam"_s), Qt::LeftButton);
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_NE(buttonNamed(*panes[0], u"Alex"_s), nullptr);
    EXPECT_NE(buttonNamed(*panes[1], u"Sam · active"_s), nullptr);
    // The same pair keeps its panes, and so its photos and viewports.
    EXPECT_EQ(view.findChildren<FramePane*>(), panes);

    model.selectFrame(indexOf(alex5));
    EXPECT_EQ(visiblePanes(view), std::vector{alex5});
}

TEST_F(PairPanelTest, FramingControlsWriteThePresentationOfTheirOwnFrame) {
    const SessionFiles session = openBundled();
    FramePane pane(model, sam3);
    pane.show();
    EXPECT_TRUE(showsText(pane, u"Independent photo view · 1200 × 800 px"_s));
    EXPECT_FALSE(buttonNamed(pane, u"Fit rider"_s)->isEnabled());

    const Presentation before = model.settings(sam3);
    QTest::mouseClick(buttonNamed(pane, u"Full photo"_s), Qt::LeftButton);
    EXPECT_FALSE(model.settings(sam3).autoFrame);
    EXPECT_EQ(model.settings(sam3).zoom, 1.0);
    EXPECT_EQ(model.settings(sam3).framingRequest, before.framingRequest + 1);
    QTest::keyClick(pane.findChild<QSlider*>(), Qt::Key_PageUp);
    EXPECT_GT(model.settings(sam3).zoom, 1.0);
    choose(pickerNamed(pane, u"Detection"_s), 1);
    QTest::mouseClick(buttonNamed(pane, u"Show original points"_s), Qt::LeftButton, {},
                      QPoint(8, 8));
    EXPECT_EQ(model.settings(sam3).kind, "2D");
    EXPECT_TRUE(model.settings(sam3).showRaw);
    EXPECT_EQ(model.settings(alex3), before); // another frame's view is untouched

    // With a framing region, "Fit rider" asks for framing again.
    const dravik::ReviewFrame& frame = frameOf(sam3);
    writeText(session.folder / "photo-framing.json",
              dravik::PhotoFramingRegion::encode(
                  {{sam3, frame.sourceHash, frame.panel, dravik::PixelRect{400, 177, 572, 445}}}));
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    const std::int64_t request = model.settings(sam3).framingRequest;
    ASSERT_TRUE(buttonNamed(pane, u"Fit rider"_s)->isEnabled());
    QTest::mouseClick(buttonNamed(pane, u"Fit rider"_s), Qt::LeftButton);
    EXPECT_TRUE(model.settings(sam3).autoFrame);
    EXPECT_EQ(model.settings(sam3).framingRequest, request + 1);
}

TEST_F(PairPanelTest, BulletsAndMeasuredElbowsHighlightTheirJoints) {
    openBundled();
    // In this left turn the left arm is the inside one: 90.4° for Alex, 90° for Sam; the
    // difference keeps its sign even when it rounds to zero.
    const auto arm = [&](const std::string& frameID, dravik::Point2 wrist) {
        for (const auto& [joint, point] :
             {std::pair{"left_shoulder", dravik::Point2{500, 300}},
              std::pair{"left_elbow", dravik::Point2{500, 400}}, std::pair{"left_wrist", wrist}})
            model.edit(point, dravik::JointReviewState::corrected, model.target(frameID, joint));
    };
    model.setCompare(true);
    arm(alex3, {600, 400.7});
    arm(sam3, {600, 400});
    showFeedback();
    const PairFeedbackView& view = *feedback;
    ASSERT_TRUE(model.report()->hasPhotoCoaching);
    EXPECT_TRUE(showsText(view, u"For Rider · Reference rider assumed correct"_s));
    EXPECT_FALSE(textStartingWith(view, u"Photo-based coaching draft"_s).isEmpty());
    // A known direction with photo coaching needs no knee review.
    EXPECT_FALSE(showsText(view, u"Knee placement · visual review"_s));
    EXPECT_FALSE(textStartingWith(view, u"Whole-body review · "_s).isEmpty());
    EXPECT_TRUE(showsText(view, u"Visible difference: +0° Rider − Reference rider; this is not a "
                                u"target or fault."_s));
    EXPECT_TRUE(showsText(view, u"Rider: 90°"_s));
    EXPECT_TRUE(showsText(view, u"Reference rider: 90°"_s));
    EXPECT_FALSE(showsText(view, u"Rider needs visible review: left_shoulder, left_elbow, "
                                 u"left_wrist"_s));
    EXPECT_TRUE(showsText(view, u"Rider needs visible review: right_shoulder, right_elbow, "
                                u"right_wrist"_s));

    TextButton* bullet = nullptr;
    for (TextButton* entry : view.findChildren<TextButton*>())
        if (entry->isVisibleTo(&view) && entry->headline()->text() == u"• Elbows bent and low"_s)
            bullet = entry;
    ASSERT_NE(bullet, nullptr);
    QTest::mouseClick(bullet->headline(), Qt::LeftButton);
    EXPECT_EQ(model.highlightedJoints(), insideElbow());
    model.setHighlightedJoints({});

    buttonNamed(view, u"Comparison details · Left turn"_s)->click();
    QTest::mouseClick(buttonNamed(view, u"Inside elbow: 0° Rider − Reference rider"_s),
                      Qt::LeftButton);
    EXPECT_EQ(model.highlightedJoints(), insideElbow());
}

TEST_F(PairPanelTest, ADifferingDirectionOverrideWithholdsPhotoCoachingAndAsksForKnees) {
    openBundled();
    showFeedback();
    const PairFeedbackView& view = *feedback;
    const QString withheld = u"Photo coaching is withheld because your direction override "
                             u"differs from the reviewed photos."_s;
    EXPECT_EQ(pickerNamed(view, u"Direction override"_s), nullptr); // folded away
    buttonNamed(view, u"Comparison details · Left turn"_s)->click();
    QComboBox* direction = pickerNamed(view, u"Direction override"_s);
    choose(direction, 2); // Right, against the photos' left
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::right);
    EXPECT_TRUE(showsText(view, withheld));
    EXPECT_FALSE(textStartingWith(view, u"Draft guidance · elbow differences of 10°"_s).isEmpty());
    EXPECT_TRUE(showsText(view, u"Knee placement · visual review"_s));
    QComboBox* inside = pickerNamed(view, u"Inside knee"_s);
    EXPECT_EQ(inside->currentIndex(), -1);
    choose(inside, 1);
    EXPECT_EQ(model.report()->context.kneePlacements,
              (std::map<dravik::PairFeature, dravik::KneePlacement>{
                  {dravik::PairFeature::insideKnee, dravik::allKneePlacements[1]}}));
    // The rebuilt panel shows what was chosen and keeps the override.
    EXPECT_EQ(pickerNamed(view, u"Inside knee"_s)->currentIndex(), 1);
    EXPECT_EQ(pickerNamed(view, u"Outside knee"_s)->currentIndex(), -1);
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::right);

    choose(direction, 0);
    EXPECT_EQ(model.report()->context.directionOverride, std::nullopt);
    EXPECT_FALSE(showsText(view, withheld));
}

TEST_F(PairPanelTest, WithoutATurnDirectionTheHintReplacesBulletsAndKneesStay) {
    // Turn 3 stripped of its photo review: no direction, no coaching.
    const SessionFiles session = bundledSession(temp.path() / "plain");
    QJsonObject manifest =
        QJsonDocument::fromJson(QByteArray::fromStdString(readText(session.manifest))).object();
    QJsonArray pairs = manifest[u"pairs"_s].toArray();
    QJsonObject turn3 = pairs[0].toObject();
    turn3.remove(u"cornerDirection"_s);
    turn3.remove(u"photoCoaching"_s);
    pairs[0] = turn3;
    manifest[u"pairs"_s] = pairs;
    writeText(session.manifest, QJsonDocument(manifest).toJson().toStdString());
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    showFeedback();
    const PairFeedbackView& view = *feedback;
    ASSERT_EQ(model.report()->effectiveCornerDirection, dravik::CornerDirection::unknown);
    EXPECT_TRUE(showsText(view, u"This pair has no turn assessment yet. Set a direction under "
                                u"Comparison details, or add a photo review."_s));
    EXPECT_TRUE(showsText(view, u"Knee placement · visual review"_s));

    buttonNamed(view, u"Comparison details · Unknown turn"_s)->click();
    choose(pickerNamed(view, u"Direction override"_s), 1);
    EXPECT_TRUE(showsText(view, u"No actionable difference from the available reviews. Elbows "
                                u"need comparable, reviewed angles; add a knee placement review "
                                u"below for knee guidance."_s));
    EXPECT_NE(pickerNamed(view, u"Inside knee"_s), nullptr);

    // Views pickers record the comparability under the observation they belong to.
    ASSERT_FALSE(model.report()->observations.empty());
    const std::string firstID = model.report()->observations[0].id;
    choose(pickerNamed(view, u"Views"_s), 1);
    EXPECT_EQ(model.report()->context.viewComparability.at(firstID),
              dravik::ViewComparability::comparable);
    const dravik::PairReport& report = *model.report();
    EXPECT_TRUE(showsText(view, QString::fromStdString("Evidence " + report.shortDigest() +
                                                       " · analyzer " + report.analyzerVersion +
                                                       " · rules " + report.ruleCatalogVersion)));
}

} // namespace tessary::test
