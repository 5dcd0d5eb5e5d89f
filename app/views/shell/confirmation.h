// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>
#include <functional>

class QMessageBox;
class QWidget;

namespace tessary {

// Asks, window-modal, before something that throws work away: `question` with a button `act`
// that does it and "Cancel", which is the default and what Escape or closing the box means.
// `confirmed` runs only for `act`. The box deletes itself once answered.
QMessageBox* askToConfirm(QWidget& window, const QString& question, const QString& act,
                          std::function<void()> confirmed);

} // namespace tessary
