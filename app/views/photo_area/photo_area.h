// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <array>
#include <functional>
#include <string>

class QSplitter;

namespace tessary {

class ReviewerModel;

// The photos and the feedback under them, arranged by review mode in a splitter the reviewer can
// drag. Each part is made when the
// model first needs it and replaced only when what it is bound to changes, so that a photo pane
// keeps its zoom while the reviewer works in it.
class PhotoArea : public QWidget {
    Q_OBJECT

  public:
    explicit PhotoArea(ReviewerModel& model, QWidget* parent = nullptr);

    // The part of each slot, or null when that slot is empty.
    enum Slot { emptyState, singlePane, singleFeedback, leanEvidence, comparison, noReference };
    QWidget* part(Slot slot) const { return parts_[slot].widget; }

  private:
    struct Part {
        std::string key; // what the widget is bound to; empty when the slot is empty
        QWidget* widget = nullptr;
    };

    void refresh();
    // True when a part came or went; false when nothing changed or a part was replaced.
    bool place(Slot slot, const std::string& key, int stretch,
               const std::function<QWidget*()>& make);
    void shareSpace();
    QWidget* nextPart(Slot slot) const;

    ReviewerModel& model_;
    QSplitter* splitter_;
    std::array<int, 6> stretch_{};
    std::array<Part, 6> parts_;
};

} // namespace tessary
