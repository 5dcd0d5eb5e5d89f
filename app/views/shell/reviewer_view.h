// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QFrame;
class QLabel;
class QPushButton;

namespace tessary {

class DiscoveryNotices;
class FramePane;
class JointInspector;
class LeanReviewView;
class PhotoArea;
class ReviewerModel;
class ReviewToolbar;
class Sidebar;
class StatusRow;

// The window's content: sidebar, the central column and the inspector column.
class ReviewerView : public QWidget {
    Q_OBJECT

  public:
    explicit ReviewerView(ReviewerModel& model, QWidget* parent = nullptr);

    ReviewerModel& model() const { return model_; }
    Sidebar* sidebar() const { return sidebar_; }
    ReviewToolbar* toolbar() const { return toolbar_; }
    DiscoveryNotices* discoveryNotices() const { return discovery_; }
    QLabel* riderNotice() const { return riderNotice_; }
    QPushButton* setRiderButton() const { return setRider_; }
    PhotoArea* photoArea() const { return photoArea_; }
    StatusRow* statusRow() const { return statusRow_; }
    // The inspector column as laid out now; null when it is absent.
    QWidget* inspectorColumn() const;
    JointInspector* jointInspector() const { return jointInspector_; }
    LeanReviewView* leanPanel() const { return leanPanel_; }
    // The pane showing the active frame; null when none does.
    FramePane* activePane() const;

  private:
    void refresh();

    ReviewerModel& model_;
    Sidebar* sidebar_;
    ReviewToolbar* toolbar_;
    DiscoveryNotices* discovery_;
    QWidget* riderNoticeRow_;
    QLabel* riderNotice_;
    QPushButton* setRider_;
    PhotoArea* photoArea_;
    StatusRow* statusRow_;
    QFrame* inspectorSeparator_;
    JointInspector* jointInspector_;
    LeanReviewView* leanPanel_;
};

} // namespace tessary
