// SPDX-License-Identifier: Apache-2.0
#include "common/wheel_guard.h"

#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QScrollBar>
#include <QWheelEvent>

namespace tessary {

namespace {

QAbstractScrollArea* scrollAreaAround(QWidget* widget) {
    for (QWidget* outer = widget->parentWidget(); outer; outer = outer->parentWidget())
        if (auto* area = qobject_cast<QAbstractScrollArea*>(outer))
            return area;
    return nullptr;
}

} // namespace

WheelGuard::WheelGuard(QWidget& window) : QObject(&window), window_(window) {
    qApp->installEventFilter(this);
}

QWidget* WheelGuard::guarded(QObject* watched) const {
    if (!watched->isWidgetType() || qobject_cast<QScrollBar*>(watched))
        return nullptr;
    auto* widget = static_cast<QWidget*>(watched);
    const bool control = qobject_cast<QComboBox*>(widget) ||
                         qobject_cast<QAbstractSpinBox*>(widget) ||
                         qobject_cast<QAbstractSlider*>(widget);
    return control && window_.isAncestorOf(widget) ? widget : nullptr;
}

bool WheelGuard::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type != QEvent::Wheel && type != QEvent::Show)
        return false;
    QWidget* control = guarded(watched);
    if (!control)
        return false;
    if (type == QEvent::Show) {
        // A wheel over the control must not give it the focus, and so the wheel. Set once it is
        // inside the window: a control is often made, and polished, before it joins it.
        if ((control->focusPolicy() & Qt::WheelFocus) == Qt::WheelFocus)
            control->setFocusPolicy(Qt::StrongFocus);
        return false;
    }
    QAbstractScrollArea* area = scrollAreaAround(control);
    if (control->hasFocus() || !area)
        return false;
    QCoreApplication::sendEvent(area->viewport(), event);
    return true;
}

} // namespace tessary
