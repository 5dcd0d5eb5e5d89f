// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/collapsible_section.h"

class QComboBox;
class QLabel;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// The folded group behind the pair's coaching: turn direction override and focus points.
class ComparisonDetailsView : public CollapsibleSection {
    Q_OBJECT

  public:
    explicit ComparisonDetailsView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QComboBox* direction_;
    QLabel* withheld_;
    QVBoxLayout* focusPoints_;
};

} // namespace tessary
