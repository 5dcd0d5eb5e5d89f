// SPDX-License-Identifier: Apache-2.0
#include "toolbar/segmented_picker.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QToolButton>

namespace tessary {

namespace {

QToolButton* makeSegment(const QString& text, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setText(text);
    button->setCheckable(true);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    return button;
}

} // namespace

SegmentedPicker::SegmentedPicker(const QString& label, const QString& falseText,
                                 const QString& trueText, int width, QWidget* parent)
    : QWidget(parent), first_(makeSegment(falseText, this)), second_(makeSegment(trueText, this)) {
    setAccessibleName(label);
    setToolTip(label);
    setFixedWidth(width);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(first_);
    layout->addWidget(second_);
    group_.setExclusive(true);
    group_.addButton(first_);
    group_.addButton(second_);
    connect(&group_, &QButtonGroup::buttonClicked, this,
            [this](QAbstractButton* button) { emit chosen(button == second_); });
}

void SegmentedPicker::display(bool value) {
    const QSignalBlocker blocker(group_);
    segment(value)->setChecked(true);
}

} // namespace tessary
