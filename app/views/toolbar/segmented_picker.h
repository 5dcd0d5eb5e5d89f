// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QButtonGroup>
#include <QString>
#include <QWidget>

class QToolButton;

namespace tessary {

// A two-segment picker between false (first segment) and true (second segment). It shows what
// it is given and reports the user's choice; it never keeps a value of its own.
class SegmentedPicker : public QWidget {
    Q_OBJECT

  public:
    SegmentedPicker(const QString& label, const QString& falseText, const QString& trueText,
                    int width, QWidget* parent = nullptr);

    void display(bool value);
    QToolButton* segment(bool value) const { return value ? second_ : first_; }

  signals:
    void chosen(bool value);

  private:
    QButtonGroup group_;
    QToolButton* first_;
    QToolButton* second_;
};

} // namespace tessary
