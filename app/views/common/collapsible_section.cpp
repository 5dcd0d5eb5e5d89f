// SPDX-License-Identifier: Apache-2.0
#include "common/collapsible_section.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace tessary {

using namespace Qt::StringLiterals;

CollapsibleSection::CollapsibleSection(const QString& title, QWidget* parent)
    : QWidget(parent), toggle_(new QToolButton(this)), content_(new QWidget(this)),
      contentLayout_(new QVBoxLayout(content_)) {
    toggle_->setText(title);
    toggle_->setCheckable(true);
    toggle_->setAutoRaise(true);
    toggle_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    toggle_->setArrowType(Qt::RightArrow);
    // A disclosure line, not a pressed button, when open.
    toggle_->setStyleSheet(u"QToolButton { border: none; background: transparent; }"_s);
    contentLayout_->setContentsMargins(18, 0, 0, 0);
    content_->hide();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(toggle_);
    layout->addWidget(content_);
    connect(toggle_, &QToolButton::toggled, this, &CollapsibleSection::setExpanded);
}

void CollapsibleSection::setTitle(const QString& title) {
    toggle_->setText(title);
}

QString CollapsibleSection::title() const {
    return toggle_->text();
}

bool CollapsibleSection::isExpanded() const {
    return toggle_->isChecked();
}

void CollapsibleSection::setExpanded(bool on) {
    toggle_->setChecked(on);
    toggle_->setArrowType(on ? Qt::DownArrow : Qt::RightArrow);
    content_->setVisible(on);
}

} // namespace tessary
