// SPDX-License-Identifier: Apache-2.0
#include "common/widgets.h"

#include <QFrame>
#include <QLabel>
#include <QLayout>

namespace tessary {

void clearLayout(QLayout* layout) {
    while (QLayoutItem* item = layout->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        } else if (QLayout* inner = item->layout()) {
            clearLayout(inner);
        }
        delete item;
    }
}

QLabel* textLabel(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

QLabel* secondaryLabel(const QString& text, QWidget* parent) {
    QLabel* label = textLabel(text, parent);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, palette.color(QPalette::PlaceholderText));
    label->setPalette(palette);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.9);
    label->setFont(font);
    return label;
}

QLabel* headingLabel(const QString& text, QWidget* parent) {
    QLabel* label = textLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * 1.1);
    label->setFont(font);
    return label;
}

QLabel* warningLabel(const QString& text, QWidget* parent) {
    QLabel* label = textLabel(text, parent);
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, QColor(230, 126, 0));
    label->setPalette(palette);
    return label;
}

QWidget* divider(QWidget* parent) {
    auto* line = new QFrame(parent);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

} // namespace tessary
