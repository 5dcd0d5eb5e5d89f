// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QFrame>

class QLabel;

namespace tessary {

// A borderless button of two left-aligned lines, a headline over a caption, whose texts stay
// selectable: a click that selects no text presses it.
class TextButton : public QFrame {
    Q_OBJECT

  public:
    TextButton(const QString& headline, const QString& detail, QWidget* parent = nullptr);

    QLabel* headline() const { return headline_; }
    QLabel* detail() const { return detail_; }

  signals:
    void clicked();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    QLabel* headline_;
    QLabel* detail_;
};

} // namespace tessary
