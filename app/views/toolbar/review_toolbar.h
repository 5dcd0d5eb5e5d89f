// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QCheckBox;
class QHBoxLayout;
class QPushButton;

namespace tessary {

class ReviewerModel;
class SegmentedPicker;

// The row above the photos: review mode, edit target, markers, inspector and undo.
class ReviewToolbar : public QWidget {
    Q_OBJECT

  public:
    explicit ReviewToolbar(ReviewerModel& model, QWidget* parent = nullptr);

    SegmentedPicker* reviewModePicker() const { return reviewMode_; }
    SegmentedPicker* editPicker() const { return edit_; }
    QCheckBox* markersToggle() const { return markers_; }
    QPushButton* inspectorButton() const { return inspector_; }
    QPushButton* undoButton() const { return undo_; }

    // Narrow enough for the pickers and the toggle; the rest wraps.
    QSize minimumSizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void refresh();
    // Inspector and Undo move to a second row when one row is too narrow for everything.
    void arrange(int width);

    ReviewerModel& model_;
    SegmentedPicker* reviewMode_;
    SegmentedPicker* edit_;
    QCheckBox* markers_;
    QPushButton* inspector_;
    QPushButton* undo_;
    QHBoxLayout* firstRow_;
    QHBoxLayout* secondRow_;
    QWidget* trailing_;
};

} // namespace tessary
