// SPDX-License-Identifier: Apache-2.0
#include "common/text_button.h"

#include "common/widgets.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace tessary {

TextButton::TextButton(const QString& headline, const QString& detail, QWidget* parent)
    : QFrame(parent), headline_(textLabel(headline, this)), detail_(secondaryLabel(detail, this)) {
    QFont medium = headline_->font();
    medium.setWeight(QFont::Medium);
    headline_->setFont(medium);
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::TabFocus);
    setAccessibleName(headline);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    layout->setSpacing(1);
    layout->addWidget(headline_);
    layout->addWidget(detail_);
    detail_->setVisible(!detail.isEmpty());
    headline_->installEventFilter(this);
    detail_->installEventFilter(this);
}

bool TextButton::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::MouseButtonRelease) {
        auto* label = qobject_cast<QLabel*>(watched);
        auto* release = static_cast<QMouseEvent*>(event);
        if (label && release->button() == Qt::LeftButton && !label->hasSelectedText())
            emit clicked();
    }
    return QFrame::eventFilter(watched, event);
}

void TextButton::mouseReleaseEvent(QMouseEvent* event) {
    // A release over a label was already handled by the filter, when the label passed it on.
    const QPoint at = event->position().toPoint();
    if (event->button() == Qt::LeftButton && rect().contains(at) && !childAt(at))
        emit clicked();
    QFrame::mouseReleaseEvent(event);
}

void TextButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return ||
        event->key() == Qt::Key_Enter) {
        emit clicked();
        return;
    }
    QFrame::keyPressEvent(event);
}

} // namespace tessary
