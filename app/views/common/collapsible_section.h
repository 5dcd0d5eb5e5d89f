// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QToolButton;
class QVBoxLayout;

namespace tessary {

// A titled group the reader folds open; it starts folded and keeps its state across redraws.
class CollapsibleSection : public QWidget {
    Q_OBJECT

  public:
    explicit CollapsibleSection(const QString& title, QWidget* parent = nullptr);

    void setTitle(const QString& title);
    QString title() const;
    bool isExpanded() const;
    void setExpanded(bool on);
    QVBoxLayout* contentLayout() const { return contentLayout_; }

  private:
    QToolButton* toggle_;
    QWidget* content_;
    QVBoxLayout* contentLayout_;
};

} // namespace tessary
