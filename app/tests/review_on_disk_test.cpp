// SPDX-License-Identifier: Apache-2.0
#include "dravik/store.h"
#include "model_fixture.h"

namespace tessary::test {

using dravik::JointReviewState;
using dravik::Point2;

TEST_F(ModelTest, AMergeIsAppliedOnlyToTheDocumentItWasMadeFrom) {
    const SessionFiles session = openBundled();
    model.edit(Point2{300, 300}, JointReviewState::corrected);

    // Nobody else wrote the file: there is nothing to settle.
    EXPECT_FALSE(model.prepareMerge());
    EXPECT_EQ(model.message(), "No changes elsewhere to merge \u00b7 revision 1 saved");

    dravik::ReviewDocument theirs = session.saved();
    theirs.setJoint(2, "nose", Point2{5, 5}, JointReviewState::corrected);
    dravik::ReviewStore::save(theirs, session.review(), 1);
    model.setSelected("nose");
    model.edit(Point2{400, 400}, JointReviewState::corrected);
    model.clearError();
    const auto pending = model.prepareMerge();
    ASSERT_TRUE(pending);

    // A change made while the reviewer settles the merge (a detection answered, say) would be
    // dropped by applying it: it is refused and both sides stay as they are.
    model.edit(Point2{410, 410}, JointReviewState::corrected);
    model.clearError();
    const auto mine = model.snapshot()->documentPointer;
    model.applyMerge(*pending);
    EXPECT_EQ(model.error(), "The review in this window changed while the merge was being "
                             "settled, so nothing was merged; merge again.");
    EXPECT_EQ(model.snapshot()->documentPointer, mine);
    EXPECT_EQ(session.saved(), theirs);
    EXPECT_EQ(model.unsavedEdits(), 2);
}

} // namespace tessary::test
