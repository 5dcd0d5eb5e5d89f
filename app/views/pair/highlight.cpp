// SPDX-License-Identifier: Apache-2.0
#include "pair/highlight.h"

#include "reviewer_model.h"

namespace tessary {

void highlight(ReviewerModel& model, std::optional<dravik::PairFeature> feature) {
    const dravik::PairReport* report = model.report();
    std::set<std::string> joints;
    if (report && feature)
        for (std::string& joint : dravik::joints(*feature, report->effectiveCornerDirection))
            joints.insert(std::move(joint));
    model.setHighlightedJoints(joints);
}

} // namespace tessary
