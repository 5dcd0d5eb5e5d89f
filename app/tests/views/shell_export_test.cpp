// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "shell/review_alert.h"
#include "shell/review_menus.h"
#include "views_fixture.h"

#include <QAction>

namespace tessary::test {

TEST_F(ShellTest, TheFileMenuExportsTheSavedReviewAndRefusesOneNotSaved) {
    QAction* report = window.menus()->exportCoachingReport();
    QAction* coco = window.menus()->exportCocoKeypoints();
    EXPECT_FALSE(report->isEnabled());
    EXPECT_FALSE(coco->isEnabled());
    const SessionFiles session = openBundled("session", true);
    ASSERT_TRUE(report->isEnabled());
    model.setCompare(true);
    model.setSelected("left_elbow");
    model.setState(dravik::JointReviewState::confirmedVisible);
    ASSERT_FALSE(model.isUnsaved());

    // The pair on screen, to a name without its extension.
    const fs::path out = temp.path() / "out";
    fs::create_directories(out);
    chooser->answers = {out / "turn-3"};
    chooseFromMenu(report);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(chooser->offered.back(), session.folder / "coaching-report-turn-3.pdf");
    EXPECT_EQ(model.message(), "Coaching report exported to “turn-3.pdf” · 1 page");
    EXPECT_TRUE(readText(out / "turn-3.pdf").starts_with("%PDF-"));

    chooser->answers = {out / "joints.json"};
    chooseFromMenu(coco);
    EXPECT_EQ(model.error(), std::nullopt);
    EXPECT_EQ(model.message(), "Reviewed joints exported to “joints.json” · 1 keypoint on 1 "
                               "reviewed photo");
    EXPECT_TRUE(readText(out / "joints.json").starts_with("{"));

    // Another program saved the review meanwhile, so our next edit stays unsaved: neither export
    // is written and the reviewer is told why, before any file is asked for.
    dravik::ReviewDocument theirs = session.saved();
    theirs.setJoint(0, "nose", dravik::Point2{5, 5}, dravik::JointReviewState::corrected);
    dravik::ReviewStore::save(theirs, session.review(), theirs.revision() - 1);
    model.setSelected("left_wrist");
    model.setState(dravik::JointReviewState::confirmedVisible);
    ASSERT_TRUE(model.isUnsaved());
    model.clearError();
    ASSERT_TRUE(waitUntil([&] { return window.alert()->box() == nullptr; }));
    for (QAction* action : {report, coco}) {
        chooser->answers = {out / "unsaved"};
        chooseFromMenu(action);
        EXPECT_EQ(model.error(), "The review on screen is not saved, so nothing was exported. "
                                 "Save the review, then export again.");
        ASSERT_TRUE(waitUntil([&] { return window.alert()->box() != nullptr; }));
        model.clearError();
        ASSERT_TRUE(waitUntil([&] { return window.alert()->box() == nullptr; }));
        EXPECT_EQ(chooser->answers.size(), 1u);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(out), fs::directory_iterator()), 2);
}

} // namespace tessary::test
