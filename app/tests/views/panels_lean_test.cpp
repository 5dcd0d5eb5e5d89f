#include "dravik/lean_analysis.h"
#include "lean/lean_evidence_view.h"
#include "lean/lean_review_view.h"
#include "model_fixture.h"
#include "panels_lookup.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace tessary::test {

namespace {

using dravik::Point2;
using namespace Qt::StringLiterals;

void place(ReviewerModel& model, const std::string& frameID, bool reference, Point2 a, Point2 b) {
    model.beginLeanPlacement(reference);
    model.placeLean(a, frameID);
    model.placeLean(b, frameID);
}

// Alex leans 7.14° (sensitivity 1.00°), Sam stands upright (sensitivity 1.00°).
void drawBothRiders(ReviewerModel& model) {
    model.activate(alex3);
    place(model, alex3, false, {400, 700}, {460, 100});
    place(model, alex3, true, {100, 750}, {900, 730});
    model.activate(sam3);
    place(model, sam3, false, {400, 700}, {400, 100});
    place(model, sam3, true, {100, 750}, {900, 750});
    model.activate(alex3);
}

class LeanPanelTest : public ModelTest {
  protected:
    void click(QWidget& root, const QString& text) {
        QAbstractButton* button = buttonNamed(root, text);
        ASSERT_NE(button, nullptr) << text.toStdString();
        ASSERT_TRUE(button->isEnabled()) << text.toStdString();
        // Near the left edge: a check box only takes clicks on its box and text.
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    std::optional<dravik::LeanAnnotation> alexLean() const { return model.lean(alex3); }
};

} // namespace

TEST_F(LeanPanelTest, WithoutAFrameTheEditorNamesNoRiderAndOffersNothingToEdit) {
    LeanReviewView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Rider · wheel lean"_s));
    for (const QString& control :
         {u"Place / replace wheel axis"_s, u"Place / replace reference line"_s,
          u"Confirm visible wheel axis"_s, u"Mark unobservable"_s, u"Clear wheel axis"_s,
          u"Move lean endpoint left"_s})
        EXPECT_FALSE(buttonNamed(view, control)->isEnabled()) << control.toStdString();
}

TEST_F(LeanPanelTest, PlacementPromptsFollowTheClicksAndCancelEndsThePlacement) {
    openBundled();
    model.setLeanMode(true);
    LeanReviewView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Alex · wheel lean"_s));
    EXPECT_EQ(buttonNamed(view, u"Cancel placement"_s), nullptr);

    click(view, u"Place / replace wheel axis"_s);
    EXPECT_EQ(model.leanPlacement(), dravik::LeanHandle::wheelA);
    EXPECT_TRUE(showsText(view, u"Click the first endpoint, then the second."_s));
    model.placeLean({100, 100}, alex3);
    EXPECT_TRUE(showsText(view, u"Click the second endpoint. Escape cancels."_s));
    click(view, u"Cancel placement"_s);
    EXPECT_EQ(model.leanPlacement(), std::nullopt);
    EXPECT_EQ(model.leanPlacementStart(), std::nullopt);
    EXPECT_EQ(buttonNamed(view, u"Cancel placement"_s), nullptr);

    // Hiding the overlay also abandons a placement in progress.
    click(view, u"Place / replace reference line"_s);
    EXPECT_EQ(model.leanPlacement(), dravik::LeanHandle::referenceA);
    click(view, u"Show lean overlay"_s);
    EXPECT_FALSE(model.showLean());
    EXPECT_EQ(model.leanPlacement(), std::nullopt);
}

TEST_F(LeanPanelTest, EditingControlsChangeTheAnnotationThroughUndoableEdits) {
    openBundled();
    model.setLeanMode(true);
    place(model, alex3, false, {400, 700}, {460, 100});
    LeanReviewView view(model);
    view.show();
    const std::size_t placed = model.undoStack().size();

    // The picked endpoint is the one the arrows move.
    QComboBox* endpoint = pickerNamed(view, u"Endpoint"_s);
    choose(endpoint, 1);
    EXPECT_EQ(model.selectedLeanHandle(), dravik::LeanHandle::wheelB);
    click(view, u"Move lean endpoint right"_s);
    click(view, u"Move lean endpoint up"_s);
    EXPECT_EQ(alexLean()->wheel->b, (Point2{461, 99}));
    EXPECT_EQ(alexLean()->wheel->a, (Point2{400, 700}));
    // No reference line: its endpoint cannot be nudged.
    choose(endpoint, 2);
    EXPECT_FALSE(buttonNamed(view, u"Move lean endpoint left"_s)->isEnabled());

    EXPECT_TRUE(showsText(view, u"Wheel uncertainty: ±3 px"_s));
    click(view, u"Increase wheel uncertainty"_s);
    EXPECT_EQ(alexLean()->wheel->uncertainty, 4.0);
    EXPECT_TRUE(showsText(view, u"Wheel uncertainty: ±4 px"_s));
    EXPECT_FALSE(buttonNamed(view, u"Increase reference uncertainty"_s)->isEnabled());

    click(view, u"Confirm visible wheel axis"_s);
    EXPECT_TRUE(alexLean()->wheelReviewed);
    EXPECT_FALSE(buttonNamed(view, u"Confirm visible wheel axis"_s)->isEnabled());
    click(view, u"Mark unobservable"_s);
    EXPECT_TRUE(alexLean()->wheelNotObservable);
    EXPECT_FALSE(alexLean()->wheelReviewed);
    EXPECT_TRUE(buttonNamed(view, u"Confirm visible wheel axis"_s)->isEnabled());

    // Basis and feature ID are saved with the annotation; the caution follows the basis.
    EXPECT_TRUE(showsText(view, u"This line is only assumed level. It does not establish "
                                u"physical motorcycle lean."_s));
    choose(pickerNamed(view, u"Reference basis"_s), 1);
    EXPECT_EQ(alexLean()->basis, dravik::LeanBasis::sharedFeature);
    EXPECT_TRUE(showsText(view, u"Review correspondence and perspective; watermarks and moving "
                                u"objects are not references."_s));
    auto* feature = view.findChild<QLineEdit*>();
    feature->setFocus();
    QTest::keyClicks(feature, u"kerb"_s);
    QTest::keyClick(feature, Qt::Key_Return);
    EXPECT_EQ(alexLean()->featureID, "kerb");

    click(view, u"Clear wheel axis"_s);
    EXPECT_EQ(alexLean()->wheel, std::nullopt);
    EXPECT_FALSE(buttonNamed(view, u"Clear wheel axis"_s)->isEnabled());
    EXPECT_EQ(model.undoStack().size(), placed + 8);
    model.undo();
    EXPECT_TRUE(alexLean()->wheel.has_value());
}

TEST_F(LeanPanelTest, EvidenceListsEachVisibleRiderAndThePreviewComesFirstInTheStatus) {
    openBundled();
    model.setLeanMode(true);
    LeanEvidenceView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Alex: wheel angle unavailable; place or review the lines."_s));
    EXPECT_EQ(textStartingWith(view, u"Revision"_s), u"Revision 0 · Unsaved"_s);
    // Single mode: no comparison, checks or approval.
    EXPECT_EQ(buttonNamed(view, u"Approve this comparison"_s), nullptr);
    EXPECT_EQ(buttonNamed(view, u"Same wheel cue"_s), nullptr);

    place(model, alex3, false, {400, 700}, {460, 100});
    place(model, alex3, true, {100, 750}, {900, 730});
    const QString basis = QString::fromUtf8(dravik::label(dravik::LeanBasis::assumedLevel));
    EXPECT_TRUE(showsText(view, u"Alex: 7° · 2D wheel lean · "_s + basis +
                                    u" · Draft · Annotation sensitivity 6° to 8°"_s))
        << visibleTexts(view).join(u'\n').toStdString();
    EXPECT_EQ(textStartingWith(view, u"Revision"_s),
              u"Revision "_s + QString::number(model.document()->revision()) +
                  u" · Saved locally"_s);

    model.beginLeanPlacement(false);
    model.placeLean({10, 10}, alex3);
    EXPECT_EQ(textStartingWith(view, u"Revision"_s),
              u"Revision "_s + QString::number(model.document()->revision()) +
                  u" · Preview pending · release to save"_s);
}

TEST_F(LeanPanelTest, ApprovalNeedsAllFiveChecksAndALineChangeWithdrawsIt) {
    openBundled();
    model.setLeanMode(true);
    model.setCompare(true);
    drawBothRiders(model);
    LeanEvidenceView view(model);
    view.show();
    EXPECT_TRUE(
        showsText(view, u"Rider − Reference rider: +7° [+5°, +9°] annotation sensitivity"_s));
    EXPECT_EQ(visibleTexts(view).filter(u"wheel lean · "_s).size(), 2);

    QAbstractButton* approve = buttonNamed(view, u"Approve this comparison"_s);
    const QString checks[] = {u"Same wheel cue"_s, u"Camera views comparable"_s,
                              u"Wheel headings comparable"_s,
                              u"Reference basis / correspondence comparable"_s,
                              u"Camera roll comparable (image vertical)"_s};
    for (const QString& check : checks) {
        EXPECT_FALSE(approve->isEnabled());
        click(view, check);
    }
    const dravik::LeanPairContext* stored = model.document()->leanPairContext("turn-3");
    ASSERT_NE(stored, nullptr);
    EXPECT_TRUE(stored->checksComplete());
    ASSERT_TRUE(approve->isEnabled());
    click(view, u"Approve this comparison"_s);
    EXPECT_EQ(model.document()->leanPairContext("turn-3")->approvalDigest,
              dravik::LeanAnalysis::evidenceDigest(*model.document(), *model.pair()));
    EXPECT_TRUE(approve->isChecked());

    // Reporting similar speed is a change of evidence: the approval goes, the note appears.
    click(view, u"Similar speed — user reported"_s);
    EXPECT_EQ(model.document()->leanPairContext("turn-3")->approvalDigest, std::nullopt);
    EXPECT_FALSE(approve->isChecked());
    EXPECT_TRUE(showsText(view, u"Similar speed: user reported. Discuss the observation with "
                                u"separately reviewed posture and turn context."_s));

    model.nudgeLean(1, 0);
    for (const QString& check : checks)
        EXPECT_FALSE(buttonNamed(view, check)->isChecked()) << check.toStdString();
    EXPECT_FALSE(approve->isEnabled());
    EXPECT_TRUE(buttonNamed(view, u"Similar speed — user reported"_s)->isChecked());
}

} // namespace tessary::test
