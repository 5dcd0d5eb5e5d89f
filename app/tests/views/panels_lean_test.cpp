// SPDX-License-Identifier: Apache-2.0
#include "dravik/digest_text.h"
#include "dravik/lean_analysis.h"
#include "lean/lean_evidence_view.h"
#include "lean/lean_review_view.h"
#include "views_fixture.h"

#include <QLineEdit>

namespace tessary::test {

namespace {

using dravik::Point2;
using namespace Qt::StringLiterals;

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
    void expectRevision(const QWidget& view, const QString& state) const {
        EXPECT_EQ(textStartingWith(view, u"Revision "_s),
                  u"Revision "_s + QString::number(model.document()->revision()) + state);
    }
};

} // namespace

TEST_F(LeanPanelTest, PlacementPromptsFollowTheClicksAndCancelOrHidingEndsThem) {
    LeanReviewView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Rider · wheel lean"_s));
    EXPECT_FALSE(buttonNamed(view, u"Place / replace wheel axis"_s)->isEnabled());
    EXPECT_FALSE(buttonNamed(view, u"Move lean endpoint left"_s)->isEnabled());

    openBundled();
    model.setLeanMode(true);
    EXPECT_TRUE(showsText(view, u"Alex · wheel lean"_s));
    EXPECT_EQ(buttonNamed(view, u"Cancel placement"_s), nullptr);
    click(view, u"Place / replace wheel axis"_s);
    EXPECT_EQ(model.leanPlacement(), dravik::LeanHandle::wheelA);
    EXPECT_TRUE(showsText(view, u"Click the first endpoint, then the second."_s));
    model.placeLean({100, 100}, alex3);
    EXPECT_TRUE(showsText(view, u"Click the second endpoint. Escape cancels."_s));
    click(view, u"Cancel placement"_s);
    EXPECT_EQ(model.leanPlacementStart(), std::nullopt);
    EXPECT_EQ(buttonNamed(view, u"Cancel placement"_s), nullptr);

    click(view, u"Place / replace reference line"_s);
    EXPECT_EQ(model.leanPlacement(), dravik::LeanHandle::referenceA);
    click(view, u"Show lean overlay"_s);
    EXPECT_FALSE(model.showLean());
    EXPECT_EQ(model.leanPlacement(), std::nullopt);
}

TEST_F(LeanPanelTest, EditingControlsChangeTheAnnotationThroughUndoableEdits) {
    openBundled();
    model.setLeanMode(true);
    placeLean(alex3, false, {400, 700}, {460, 100});
    LeanReviewView view(model);
    view.show();
    const std::size_t placed = model.undoStack().size();

    // The picked endpoint is the one the arrows move; a missing line's cannot be moved.
    QComboBox* endpoint = pickerNamed(view, u"Endpoint"_s);
    choose(endpoint, 1);
    EXPECT_EQ(model.selectedLeanHandle(), dravik::LeanHandle::wheelB);
    click(view, u"Move lean endpoint right"_s);
    click(view, u"Move lean endpoint up"_s);
    EXPECT_EQ(alexLean()->wheel->b, (Point2{461, 99}));
    choose(endpoint, 2);
    EXPECT_FALSE(buttonNamed(view, u"Move lean endpoint left"_s)->isEnabled());

    EXPECT_TRUE(showsText(view, u"Wheel uncertainty: ±3 px"_s));
    click(view, u"Increase wheel uncertainty"_s);
    EXPECT_TRUE(showsText(view, u"Wheel uncertainty: ±4 px"_s));
    EXPECT_FALSE(buttonNamed(view, u"Increase reference uncertainty"_s)->isEnabled());

    click(view, u"Confirm visible wheel axis"_s);
    EXPECT_TRUE(alexLean()->wheelReviewed);
    EXPECT_FALSE(buttonNamed(view, u"Confirm visible wheel axis"_s)->isEnabled());
    click(view, u"Mark unobservable"_s);
    EXPECT_TRUE(alexLean()->wheelNotObservable && !alexLean()->wheelReviewed);
    click(view, u"Confirm visible wheel axis"_s);
    EXPECT_TRUE(alexLean()->wheelReviewed && !alexLean()->wheelNotObservable)
        << "a wheel seen and confirmed is observable";

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
    EXPECT_EQ(model.undoStack().size(), placed + 9);
    model.undo();
    EXPECT_TRUE(alexLean()->wheel.has_value());
}

TEST_F(LeanPanelTest, TheEvidenceListsEachRiderAndItsApprovalNeedsFiveChecksOnUnchangedEvidence) {
    openBundled();
    model.setLeanMode(true);
    LeanEvidenceView view(model);
    view.show();
    EXPECT_TRUE(showsText(view, u"Alex: wheel angle unavailable; place or review the lines."_s));
    expectRevision(view, u" · Unsaved"_s);
    EXPECT_EQ(buttonNamed(view, u"Approve this comparison"_s), nullptr) << "single mode";

    // Alex leans 7.14°, Sam stands upright, each within an annotation sensitivity of 1°.
    placeLean(alex3, false, {400, 700}, {460, 100});
    placeLean(alex3, true, {100, 750}, {900, 730});
    const QString basis = QString::fromUtf8(dravik::label(dravik::LeanBasis::assumedLevel));
    EXPECT_TRUE(showsText(view, u"Alex: 7° · 2D wheel lean · "_s + basis +
                                    u" · Draft · Annotation sensitivity 6° to 8°"_s));
    expectRevision(view, u" · Saved locally"_s);
    model.beginLeanPlacement(false);
    model.placeLean({10, 10}, alex3);
    expectRevision(view, u" · Preview pending · release to save"_s);
    model.cancelInteraction();

    model.setCompare(true);
    model.activate(sam3);
    EXPECT_TRUE(
        textStartingWith(view, u"Comparison unavailable. "_s).contains(u"Reference rider"_s))
        << "which photo lacks lines";
    placeLean(sam3, false, {400, 700}, {400, 100});
    placeLean(sam3, true, {100, 750}, {900, 750});
    model.activate(alex3);
    EXPECT_TRUE(
        showsText(view, u"Rider − Reference rider: +7° [+5°, +9°] annotation sensitivity"_s));
    EXPECT_EQ(visibleTexts(view).filter(u"wheel lean · "_s).size(), 2);

    // Approval needs all five checks; a change of evidence withdraws it.
    QAbstractButton* approve = buttonNamed(view, u"Approve this comparison"_s);
    const QString checks[] = {u"Same wheel cue"_s, u"Camera views comparable"_s,
                              u"Wheel headings comparable"_s,
                              u"Reference basis / correspondence comparable"_s,
                              u"Camera roll comparable (image vertical)"_s};
    for (const QString& check : checks) {
        EXPECT_FALSE(approve->isEnabled());
        click(view, check);
    }
    ASSERT_TRUE(approve->isEnabled());
    click(view, u"Approve this comparison"_s);
    EXPECT_TRUE(approve->isChecked());
    const std::string digest =
        dravik::LeanAnalysis::evidenceDigest(*model.document(), *model.pair());
    EXPECT_TRUE(showsText(view, u"Approved · evidence "_s +
                                    QString::fromStdString(dravik::shortDigest(digest))));

    // Reporting similar speed is a change of evidence (a moved line too, see the model's tests):
    // the approval goes, the note appears, and the status line says it went.
    click(view, u"Similar speed — user reported"_s);
    EXPECT_EQ(model.document()->leanPairContext("turn-3")->approvalDigest, std::nullopt);
    EXPECT_FALSE(approve->isChecked());
    EXPECT_TRUE(showsText(view, u"Not approved"_s));
    EXPECT_TRUE(model.message().ends_with(" · Lean comparison approval withdrawn"));
    EXPECT_TRUE(showsText(view, u"Similar speed: user reported. Discuss the observation with "
                                u"separately reviewed posture and turn context."_s));
}

} // namespace tessary::test
