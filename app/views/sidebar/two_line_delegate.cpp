// SPDX-License-Identifier: Apache-2.0
#include "sidebar/two_line_delegate.h"

#include <QApplication>
#include <QPainter>

namespace tessary {

namespace {

constexpr int padding = 4;

} // namespace

QFont TwoLineDelegate::secondLineFont(const QFont& base) {
    QFont font = base;
    font.setPointSizeF(base.pointSizeF() * 0.85);
    return font;
}

void TwoLineDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    QStyleOptionViewItem item = option;
    initStyleOption(&item, index);
    const QString second = index.data(secondLineRole).toString();
    // The style draws the selection and focus; the texts are drawn here.
    item.text.clear();
    const QStyle* style = item.widget ? item.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const bool selected = item.state & QStyle::State_Selected;
    const QPalette::ColorGroup group =
        item.state & QStyle::State_Enabled ? QPalette::Normal : QPalette::Disabled;
    const QColor primary =
        item.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);
    QColor secondary = primary;
    secondary.setAlphaF(0.65);

    const QRect area = item.rect.adjusted(padding + 2, padding, -padding, -padding);
    const QFontMetrics firstMetrics(item.font);
    painter->save();
    painter->setFont(item.font);
    painter->setPen(primary);
    const QString first = index.data(Qt::DisplayRole).toString();
    painter->drawText(QRect(area.left(), area.top(), area.width(), firstMetrics.height()),
                      Qt::AlignLeft | Qt::AlignVCenter,
                      firstMetrics.elidedText(first, Qt::ElideRight, area.width()));
    if (!second.isEmpty()) {
        const QFont small = secondLineFont(item.font);
        const QFontMetrics secondMetrics(small);
        painter->setFont(small);
        painter->setPen(secondary);
        painter->drawText(QRect(area.left(), area.top() + firstMetrics.height() + 1, area.width(),
                                secondMetrics.height()),
                          Qt::AlignLeft | Qt::AlignVCenter,
                          secondMetrics.elidedText(second, Qt::ElideRight, area.width()));
    }
    painter->restore();
}

QSize TwoLineDelegate::sizeHint(const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    const QFontMetrics firstMetrics(option.font);
    int height = firstMetrics.height();
    int width = firstMetrics.horizontalAdvance(index.data(Qt::DisplayRole).toString());
    const QString second = index.data(secondLineRole).toString();
    if (!second.isEmpty()) {
        const QFontMetrics secondMetrics(secondLineFont(option.font));
        height += secondMetrics.height() + 1;
        width = std::max(width, secondMetrics.horizontalAdvance(second));
    }
    return {width + 2 * padding + 2, height + 2 * padding};
}

} // namespace tessary
