// SPDX-License-Identifier: Apache-2.0
#include "shell/confirmation.h"

#include <QMessageBox>
#include <QPushButton>

namespace tessary {

QMessageBox* askToConfirm(QWidget& window, const QString& question, const QString& act,
                          std::function<void()> confirmed) {
    auto* box = new QMessageBox(&window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(window.windowTitle());
    box->setIcon(QMessageBox::Warning);
    box->setText(question);
    QPushButton* yes = box->addButton(act, QMessageBox::DestructiveRole);
    QPushButton* cancel = box->addButton("Cancel", QMessageBox::RejectRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    box->setWindowModality(Qt::WindowModal);
    QObject::connect(box, &QMessageBox::finished, box,
                     [box, yes, confirmed = std::move(confirmed)] {
                         if (box->clickedButton() == yes)
                             confirmed();
                     });
    box->open();
    return box;
}

} // namespace tessary
