// SPDX-License-Identifier: Apache-2.0
#include "shell/review_alert.h"

#include "reviewer_model.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

namespace tessary {

ReviewAlert::ReviewAlert(QWidget& window, ReviewerModel& model)
    : QObject(&window), model_(model), box_(new QMessageBox(&window)) {
    box_->setWindowTitle("Review needs attention");
    box_->setTextFormat(Qt::RichText);
    box_->setText("<b>Review needs attention</b>");
    box_->setIcon(QMessageBox::Warning);
    box_->setWindowModality(Qt::WindowModal);
    QPushButton* ok = box_->addButton("OK", QMessageBox::AcceptRole);
    box_->setDefaultButton(ok);
    box_->setEscapeButton(ok);
    // Every way of closing the alert ends in finished.
    connect(box_, &QMessageBox::finished, this, [this] { model_.clearError(); });
    connect(&model_, &ReviewerModel::errorChanged, this, &ReviewAlert::refresh);
    refresh();
}

QMessageBox* ReviewAlert::box() const {
    return box_->isVisible() ? box_ : nullptr;
}

void ReviewAlert::refresh() {
    const auto& error = model_.error();
    if (!error) {
        if (box_->isVisible())
            box_->done(QMessageBox::Accepted);
        return;
    }
    box_->setInformativeText(QString::fromStdString(*error));
    // The error is a sentence, never markup, even when it quotes something that looks like a tag.
    if (auto* label = box_->findChild<QLabel*>("qt_msgbox_informativelabel"))
        label->setTextFormat(Qt::PlainText);
    if (!box_->isVisible())
        box_->open();
}

} // namespace tessary
