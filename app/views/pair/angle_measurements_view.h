// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QLabel;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// The reviewed 2D included angles of the pair, each with its view comparability and evidence.
class AngleMeasurementsView : public QWidget {
    Q_OBJECT

  public:
    explicit AngleMeasurementsView(ReviewerModel& model, QWidget* parent = nullptr);

  private:
    void refresh();

    ReviewerModel& model_;
    QVBoxLayout* observations_;
    QLabel* evidence_;
};

} // namespace tessary
