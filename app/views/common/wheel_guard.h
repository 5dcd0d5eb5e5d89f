// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>

class QWidget;

namespace tessary {

// Keeps the wheel from changing answers by accident: a picker, slider or spin box inside a
// scrolling panel takes the wheel only once it has the keyboard focus (by a click or Tab);
// otherwise the wheel scrolls the panel. Watches every widget of `window`.
class WheelGuard : public QObject {
    Q_OBJECT

  public:
    explicit WheelGuard(QWidget& window);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget* guarded(QObject* watched) const;

    QWidget& window_;
};

} // namespace tessary
