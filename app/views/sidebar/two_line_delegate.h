// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStyledItemDelegate>

namespace tessary {

// Rows of a list with a title line and, when the item holds one, a smaller secondary line below.
class TwoLineDelegate : public QStyledItemDelegate {
    Q_OBJECT

  public:
    // The item data role that holds the second line's text.
    static constexpr int secondLineRole = Qt::UserRole + 1;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    static QFont secondLineFont(const QFont& base);
};

} // namespace tessary
