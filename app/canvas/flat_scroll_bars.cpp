// SPDX-License-Identifier: Apache-2.0
#include "flat_scroll_bars.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QPainter>
#include <QPalette>
#include <QPointer>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStyleOptionSlider>
#include <algorithm>
#include <map>

namespace tessary {

namespace {

class FlatScrollBarStyle : public QProxyStyle {
  public:
    explicit FlatScrollBarStyle(QColor groove) : groove_(groove) {}

    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                            QPainter* painter, const QWidget* widget) const override {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !bar) {
            QProxyStyle::drawComplexControl(control, option, painter, widget);
            return;
        }
        painter->fillRect(bar->rect, groove_);
        const QRect handle = subControlRect(control, bar, SC_ScrollBarSlider, widget);
        if (handle.isEmpty() || !(bar->state & State_Enabled))
            return;
        const bool pressed =
            (bar->activeSubControls & SC_ScrollBarSlider) && (bar->state & State_Sunken);
        const bool hovered =
            (bar->activeSubControls & SC_ScrollBarSlider) && (bar->state & State_MouseOver);
        const int lighter = pressed ? 500 : hovered ? 430 : 350;
        painter->fillRect(handle.adjusted(3, 3, -3, -3), groove_.lighter(lighter));
    }

    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                         const QWidget* widget) const override {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (control != CC_ScrollBar || !bar)
            return QProxyStyle::subControlRect(control, option, part, widget);
        const bool across = bar->orientation == Qt::Horizontal;
        const int length = across ? bar->rect.width() : bar->rect.height();
        const int range = bar->maximum - bar->minimum;
        int handleLength = length;
        if (range > 0) {
            const qint64 share = static_cast<qint64>(bar->pageStep) * length /
                                 (static_cast<qint64>(range) + bar->pageStep);
            handleLength = std::clamp(static_cast<int>(share),
                                      pixelMetric(PM_ScrollBarSliderMin, bar, widget), length);
        }
        const int handleStart =
            sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                    length - handleLength, bar->upsideDown);
        const auto along = [&](int start, int extent) {
            return across ? QRect(bar->rect.x() + start, bar->rect.y(), extent, bar->rect.height())
                          : QRect(bar->rect.x(), bar->rect.y() + start, bar->rect.width(), extent);
        };
        switch (part) {
        case SC_ScrollBarGroove:
            return bar->rect;
        case SC_ScrollBarSlider:
            return along(handleStart, handleLength);
        case SC_ScrollBarSubPage:
            return along(0, handleStart);
        case SC_ScrollBarAddPage:
            return along(handleStart + handleLength, length - handleStart - handleLength);
        default:
            return {}; // no arrow buttons
        }
    }

  private:
    QColor groove_;
};

} // namespace

void useFlatScrollBars(QAbstractScrollArea& area, const QColor& groove) {
    // One style per shade for the application: a proxy style builds a base style of its own, and
    // a pane is made at every step to another photo.
    static std::map<QRgb, QPointer<FlatScrollBarStyle>> styles;
    QPointer<FlatScrollBarStyle>& style = styles[groove.rgba()];
    if (!style) {
        style = new FlatScrollBarStyle(groove);
        style->setParent(QCoreApplication::instance());
    }
    area.horizontalScrollBar()->setStyle(style);
    area.verticalScrollBar()->setStyle(style);
    // The square where the two bars meet, which would show the window's colour.
    auto* corner = new QWidget;
    QPalette dark = corner->palette();
    dark.setColor(QPalette::Window, groove);
    corner->setPalette(dark);
    corner->setAutoFillBackground(true);
    area.setCornerWidget(corner);
}

} // namespace tessary
