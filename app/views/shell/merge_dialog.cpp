// SPDX-License-Identifier: Apache-2.0
#include "shell/merge_dialog.h"

#include "common/widgets.h"

#include <QButtonGroup>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

namespace tessary {

namespace {

QString count(std::size_t n) {
    return QString::number(n);
}

QLabel* columnHeading(const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

} // namespace

MergeDialog::MergeDialog(PendingMerge pending, QWidget* parent)
    : QDialog(parent), pending_(std::move(pending)) {
    setWindowTitle("Merge With Review on Disk");
    setWindowModality(Qt::WindowModal);
    const dravik::ReviewMerge& merge = pending_.merge;

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(textLabel(
        "The review on disk was changed elsewhere since this window last saved it. What changed "
        "on one side only is kept: " +
            count(merge.changesFromMine()) + " from this window, " +
            count(merge.changesFromTheirs()) + " from elsewhere.",
        this));
    layout->addWidget(textLabel(
        "These entries were changed on both sides. Choose which to keep for each:", this));

    auto* allMine = new QPushButton("Keep All from This Window", this);
    auto* allTheirs = new QPushButton("Keep All on Disk", this);
    // Enter means "Merge and Save" wherever the focus is, never a bulk choice.
    allMine->setAutoDefault(false);
    allTheirs->setAutoDefault(false);
    auto* everyRow = new QHBoxLayout;
    everyRow->addWidget(allMine);
    everyRow->addWidget(allTheirs);
    everyRow->addStretch();
    layout->addLayout(everyRow);

    auto* table = new QWidget;
    auto* grid = new QGridLayout(table);
    grid->setHorizontalSpacing(16);
    const QString headings[] = {"Photo or pair", "Entry", "This window", "On disk"};
    for (int column = 0; column < 4; ++column)
        grid->addWidget(columnHeading(headings[column], table), 0, column);
    int row = 1;
    for (const dravik::MergeConflict& conflict : merge.conflicts()) {
        grid->addWidget(textLabel(QString::fromStdString(conflict.place), table), row, 0);
        grid->addWidget(textLabel(QString::fromStdString(conflict.what), table), row, 1);
        auto* mine = new QRadioButton(QString::fromStdString(conflict.mine), table);
        auto* theirs = new QRadioButton(QString::fromStdString(conflict.theirs), table);
        auto* choice = new QButtonGroup(table);
        choice->addButton(mine);
        choice->addButton(theirs);
        (conflict.choice == dravik::MergeChoice::mine ? mine : theirs)->setChecked(true);
        grid->addWidget(mine, row, 2);
        grid->addWidget(theirs, row, 3);
        mine_.push_back(mine);
        theirs_.push_back(theirs);
        ++row;
    }
    grid->setRowStretch(row, 1);
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(table);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    layout->addWidget(scroll, 1);

    auto* buttons = new QDialogButtonBox(this);
    merge_ = buttons->addButton("Merge and Save", QDialogButtonBox::AcceptRole);
    buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
    merge_->setDefault(true);
    merge_->setFocus();
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(allMine, &QPushButton::clicked, this, [this] {
        for (QRadioButton* button : mine_)
            button->setChecked(true);
    });
    connect(allTheirs, &QPushButton::clicked, this, [this] {
        for (QRadioButton* button : theirs_)
            button->setChecked(true);
    });
    resize(760, std::min(560, 200 + 34 * row));
}

PendingMerge MergeDialog::settled() const {
    PendingMerge settled = pending_;
    auto& conflicts = settled.merge.conflicts();
    for (std::size_t i = 0; i < conflicts.size(); ++i)
        conflicts[i].choice =
            mine_[i]->isChecked() ? dravik::MergeChoice::mine : dravik::MergeChoice::theirs;
    return settled;
}

} // namespace tessary
