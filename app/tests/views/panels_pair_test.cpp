#include "common/text_button.h"
#include "common/text_format.h"
#include "dravik/framing.h"
#include "model_fixture.h"
#include "pair/frame_pane.h"
#include "pair/pair_comparison_view.h"
#include "pair/pair_feedback_view.h"
#include "panels_lookup.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <fstream>

namespace tessary::test {

namespace {

using namespace Qt::StringLiterals;

class PairPanelTest : public ModelTest {
  protected:
    // Opens the sample with turn 3 stripped of its photo review: no direction, no coaching.
    void openWithoutPhotoReview() {
        const SessionFiles session = bundledSession(temp.path() / "plain");
        QFile file(QString::fromStdString(session.manifest.string()));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QJsonObject manifest = QJsonDocument::fromJson(file.readAll()).object();
        file.close();
        QJsonArray pairs = manifest[u"pairs"_s].toArray();
        QJsonObject turn3 = pairs[0].toObject();
        turn3.remove(u"cornerDirection"_s);
        turn3.remove(u"photoCoaching"_s);
        pairs[0] = turn3;
        manifest[u"pairs"_s] = pairs;
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(QJsonDocument(manifest).toJson());
        file.close();
        model.load(session.manifest, session.results);
        ASSERT_EQ(model.error(), std::nullopt);
    }
};

} // namespace

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
    EXPECT_TRUE(view.findChildren<FramePane*>().isEmpty());
    openBundled();
    model.setCompare(true);
    settle();
    QList<FramePane*> panes;
    for (FramePane* pane : view.findChildren<FramePane*>())
        if (pane->isVisibleTo(&view))
            panes << pane;
    ASSERT_EQ(panes.size(), 2);
    EXPECT_EQ(panes[0]->frameID(), alex3);
    EXPECT_EQ(panes[1]->frameID(), sam3);
    EXPECT_NE(buttonNamed(*panes[0], u"Alex · active"_s), nullptr);
    EXPECT_NE(buttonNamed(*panes[1], u"Sam"_s), nullptr);

    QTest::mouseClick(buttonNamed(*panes[1], u"Sam"_s), Qt::LeftButton);
    EXPECT_EQ(model.activeFrameID(), sam3);
    EXPECT_NE(buttonNamed(*panes[0], u"Alex"_s), nullptr);
    EXPECT_NE(buttonNamed(*panes[1], u"Sam · active"_s), nullptr);
    // The same pair keeps its panes, and so its photos and viewports.
    EXPECT_EQ(view.findChildren<FramePane*>().size(), 2);

    model.selectFrame(indexOf(alex5));
    ASSERT_TRUE(model.pair().has_value());
    EXPECT_FALSE(model.pair()->hasReference());
    settle();
    QList<FramePane*> single;
    for (FramePane* pane : view.findChildren<FramePane*>())
        if (pane->isVisibleTo(&view))
            single << pane;
    ASSERT_EQ(single.size(), 1);
    EXPECT_EQ(single[0]->frameID(), alex5);
}

TEST_F(PairPanelTest, FramingControlsWriteThePresentationOfTheirOwnFrame) {
    const SessionFiles session = openBundled();
    FramePane pane(model, sam3);
    pane.show();
    EXPECT_TRUE(showsText(pane, u"Independent photo view · 1200 × 800 px"_s));
    EXPECT_FALSE(buttonNamed(pane, u"Fit rider"_s)->isEnabled());

    const Presentation before = model.settings(sam3);
    QTest::mouseClick(buttonNamed(pane, u"Full photo"_s), Qt::LeftButton);
    Presentation after = model.settings(sam3);
    EXPECT_FALSE(after.autoFrame);
    EXPECT_EQ(after.zoom, 1.0);
    EXPECT_EQ(after.framingRequest, before.framingRequest + 1);

    auto* slider = pane.findChild<QSlider*>();
    QTest::keyClick(slider, Qt::Key_PageUp);
    EXPECT_GT(model.settings(sam3).zoom, 1.0);
    EXPECT_FALSE(model.settings(sam3).autoFrame);

    choose(pickerNamed(pane, u"Detection"_s), 1);
    QTest::mouseClick(buttonNamed(pane, u"Show original points"_s), Qt::LeftButton, {},
                      QPoint(8, 8));
    EXPECT_EQ(model.settings(sam3).kind, "2D");
    EXPECT_TRUE(model.settings(sam3).showRaw);
    EXPECT_EQ(model.settings(alex3), before); // another frame's view is untouched

    // With a framing region, "Fit rider" asks for framing again.
    const dravik::ReviewFrame& frame = frameOf(sam3);
    std::ofstream(session.folder / "photo-framing.json") << dravik::PhotoFramingRegion::encode(
        {{sam3, frame.sourceHash, frame.panel, dravik::PixelRect{400, 177, 572, 445}}});
    model.load(session.manifest, session.results);
    ASSERT_EQ(model.error(), std::nullopt);
    QAbstractButton* fit = buttonNamed(pane, u"Fit rider"_s);
    ASSERT_TRUE(fit->isEnabled());
    const std::int64_t request = model.settings(sam3).framingRequest;
    QTest::mouseClick(fit, Qt::LeftButton);
    EXPECT_TRUE(model.settings(sam3).autoFrame);
    EXPECT_EQ(model.settings(sam3).framingRequest, request + 1);
}

TEST_F(PairPanelTest, PhotoCoachingShowsBulletsThatHighlightTheirFeature) {
    openBundled();
    model.setCompare(true);
    PairFeedbackView view(model);
    view.show();
    ASSERT_NE(model.report(), nullptr);
    ASSERT_TRUE(model.report()->hasPhotoCoaching);
    EXPECT_TRUE(showsText(view, u"For Rider · Reference rider assumed correct"_s));
    EXPECT_TRUE(showsText(view, u"• Elbows bent and low"_s));
    EXPECT_TRUE(textStartingWith(view, u"Photo-based coaching draft"_s).size() > 0);
    // A known direction with photo coaching needs no knee review.
    EXPECT_FALSE(showsText(view, u"Knee placement · visual review"_s));
    EXPECT_EQ(textStartingWith(view, u"Whole-body review · "_s),
              u"Whole-body review · 0 of 12 topics assessed"_s);

    TextButton* bullet = nullptr;
    for (TextButton* entry : view.findChildren<TextButton*>())
        if (entry->isVisibleTo(&view) && entry->headline()->text() == u"• Elbows bent and low"_s)
            bullet = entry;
    ASSERT_NE(bullet, nullptr);
    QTest::mouseClick(bullet->headline(), Qt::LeftButton);
    const auto inside =
        dravik::joints(dravik::PairFeature::insideElbow, dravik::CornerDirection::left);
    EXPECT_EQ(model.highlightedJoints(), std::set<std::string>(inside.begin(), inside.end()));
    EXPECT_FALSE(inside.empty());
}

TEST_F(PairPanelTest, ADifferingDirectionOverrideWithholdsPhotoCoachingAndAsksForKnees) {
    openBundled();
    model.setCompare(true);
    PairFeedbackView view(model);
    view.show();
    const QString withheld = u"Photo coaching is withheld because your direction override "
                             u"differs from the reviewed photos."_s;
    EXPECT_EQ(pickerNamed(view, u"Direction override"_s), nullptr); // folded away
    QAbstractButton* details = buttonNamed(view, u"Comparison details · Left turn"_s);
    ASSERT_NE(details, nullptr);
    details->click();
    QComboBox* direction = pickerNamed(view, u"Direction override"_s);
    ASSERT_NE(direction, nullptr);

    choose(direction, 1); // Left, as the photos say
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::left);
    EXPECT_TRUE(model.report()->hasPhotoCoaching);
    EXPECT_FALSE(showsText(view, withheld));

    choose(direction, 2); // Right
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::right);
    ASSERT_FALSE(model.report()->hasPhotoCoaching);
    EXPECT_TRUE(showsText(view, withheld));
    EXPECT_TRUE(textStartingWith(view, u"Draft guidance · elbow differences of 10°"_s).size() > 0);
    EXPECT_TRUE(showsText(view, u"Knee placement · visual review"_s));

    QComboBox* inside = pickerNamed(view, u"Inside knee"_s);
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(inside->currentIndex(), -1);
    choose(inside, 1);
    const auto& knees = model.report()->context.kneePlacements;
    ASSERT_TRUE(knees.has_value());
    EXPECT_EQ(*knees, (std::map<dravik::PairFeature, dravik::KneePlacement>{
                          {dravik::PairFeature::insideKnee, dravik::allKneePlacements[1]}}));
    EXPECT_EQ(pickerNamed(view, u"Inside knee"_s)->currentIndex(), 1);
    EXPECT_EQ(pickerNamed(view, u"Outside knee"_s)->currentIndex(), -1);
    EXPECT_EQ(model.report()->context.directionOverride, dravik::CornerDirection::right);

    choose(direction, 0);
    EXPECT_EQ(model.report()->context.directionOverride, std::nullopt);
    EXPECT_FALSE(showsText(view, withheld));
}

TEST_F(PairPanelTest, WithoutATurnDirectionTheHintReplacesBulletsAndKneesStay) {
    openWithoutPhotoReview();
    model.setCompare(true);
    PairFeedbackView view(model);
    view.show();
    ASSERT_NE(model.report(), nullptr);
    ASSERT_EQ(model.report()->effectiveCornerDirection, dravik::CornerDirection::unknown);
    EXPECT_TRUE(showsText(view, u"This pair has no turn assessment yet. Set a direction under "
                                u"Comparison details, or add a photo review."_s));
    EXPECT_TRUE(showsText(view, u"Knee placement · visual review"_s));
    EXPECT_NE(pickerNamed(view, u" knee"_s), nullptr);

    buttonNamed(view, u"Comparison details · Unknown turn"_s)->click();
    choose(pickerNamed(view, u"Direction override"_s), 1);
    EXPECT_TRUE(showsText(view, u"No actionable difference from the available reviews. Elbows "
                                u"need comparable, reviewed angles; add a knee placement review "
                                u"below for knee guidance."_s));
    EXPECT_NE(pickerNamed(view, u"Inside knee"_s), nullptr);

    // Views pickers record the comparability under the observation they belong to.
    ASSERT_FALSE(model.report()->observations.empty());
    const std::string firstID = model.report()->observations[0].id;
    QComboBox* views = pickerNamed(view, u"Views"_s);
    ASSERT_NE(views, nullptr);
    choose(views, 1);
    EXPECT_EQ(model.report()->context.viewComparability.at(firstID),
              dravik::ViewComparability::comparable);
    EXPECT_TRUE(showsText(
        view, u"Evidence "_s + QString::fromStdString(model.report()->shortDigest()) +
                  u" · analyzer "_s + QString::fromStdString(model.report()->analyzerVersion) +
                  u" · rules "_s + QString::fromStdString(model.report()->ruleCatalogVersion)));
}

TEST_F(PairPanelTest, MeasuredElbowsShowSignedDifferencesAndFocusPointsHighlight) {
    openBundled();
    model.setCompare(true);
    // In this left turn the left arm is the inside one: 90.4° for Alex, 90° for Sam; the
    // difference keeps its sign even when it rounds to zero.
    const auto arm = [&](const std::string& frameID, dravik::Point2 wrist) {
        for (const auto& [joint, point] :
             {std::pair{"left_shoulder", dravik::Point2{500, 300}},
              std::pair{"left_elbow", dravik::Point2{500, 400}}, std::pair{"left_wrist", wrist}})
            model.edit(point, dravik::JointReviewState::corrected, model.target(frameID, joint));
    };
    arm(alex3, {600, 400.7});
    arm(sam3, {600, 400});
    PairFeedbackView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Visible difference: +0° Rider − Reference rider; this is not a "
                                u"target or fault."_s));
    EXPECT_TRUE(showsText(view, u"Rider: 90°"_s));
    EXPECT_TRUE(showsText(view, u"Reference rider: 90°"_s));
    EXPECT_FALSE(showsText(view, u"Rider needs visible review: left_shoulder, left_elbow, "
                                 u"left_wrist"_s));
    EXPECT_TRUE(showsText(view, u"Rider needs visible review: right_shoulder, right_elbow, "
                                u"right_wrist"_s));

    buttonNamed(view, u"Comparison details · Left turn"_s)->click();
    QAbstractButton* focus = buttonNamed(view, u"Inside elbow: 0° Rider − Reference rider"_s);
    ASSERT_NE(focus, nullptr);
    QTest::mouseClick(focus, Qt::LeftButton);
    const auto inside =
        dravik::joints(dravik::PairFeature::insideElbow, dravik::CornerDirection::left);
    EXPECT_EQ(model.highlightedJoints(), std::set<std::string>(inside.begin(), inside.end()));
}

TEST_F(PairPanelTest, TheFeedbackStaysEmptyWithoutAReportAndPrefersThePendingEdit) {
    openBundled();
    model.selectFrame(indexOf(alex5));
    PairFeedbackView view(model);
    view.show();
    ASSERT_EQ(model.report(), nullptr);
    EXPECT_TRUE(visibleTexts(view).isEmpty());

    model.selectFrame(indexOf(alex3));
    ASSERT_NE(model.report(), nullptr);
    EXPECT_FALSE(showsText(view, u"Wheel lean evidence"_s));
    model.setLeanMode(true);
    EXPECT_TRUE(showsText(view, u"Wheel lean evidence"_s));
    model.beginLeanPlacement(false);
    model.placeLean({100, 100}, alex3);
    EXPECT_TRUE(showsText(view, u"Awaiting completion of edit"_s));
    model.cancelInteraction();
    EXPECT_EQ(textStartingWith(view, u"Revision "_s).endsWith(u"Unsaved"_s), model.isUnsaved());
}

} // namespace tessary::test
