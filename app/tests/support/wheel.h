// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QApplication>
#include <QSpontaneKeyEvent>
#include <QWheelEvent>
#include <QWidget>

namespace tessary::test {

// One wheel turn at `at` on `widget`, delivered as the window system delivers it: to the widget
// under the pointer first, then to its parents until one takes it.
inline void wheelAt(QWidget* widget, QPointF at, int delta,
                    Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWheelEvent event(at, widget->mapToGlobal(at), {}, {0, delta}, Qt::NoButton, modifiers,
                      Qt::NoScrollPhase, false);
    // As the test library sends its key events: sendEvent() would make it not spontaneous, and
    // Qt offers a wheel event that is not to its parents.
    QSpontaneKeyEvent::setSpontaneous(&event);
    QApplication::instance()->notify(widget, &event);
    QApplication::processEvents();
}

} // namespace tessary::test
