// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

class QLabel;
class QLayout;
class QWidget;

namespace tessary {

// Removes every item; widgets go later, so a control may clear the layout it sits in.
void clearLayout(QLayout* layout);

// A word-wrapped label whose text can be selected and copied.
QLabel* textLabel(const QString& text, QWidget* parent = nullptr);
QLabel* secondaryLabel(const QString& text, QWidget* parent = nullptr);
QLabel* headingLabel(const QString& text, QWidget* parent = nullptr);
QLabel* warningLabel(const QString& text, QWidget* parent = nullptr); // orange
QWidget* divider(QWidget* parent = nullptr);

} // namespace tessary
