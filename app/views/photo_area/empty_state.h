// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <functional>

class QPushButton;

namespace tessary {

// The photo area before any photo is open: a person-in-a-frame symbol above a title, and below
// them the way in for a coach's own photos.
class EmptyState : public QWidget {
    Q_OBJECT

  public:
    EmptyState(const QString& title, const std::function<void()>& importFolder,
               QWidget* parent = nullptr);
    QString title() const { return title_; }
    QPushButton* importButton() const { return import_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString title_;
    QPushButton* import_;
};

} // namespace tessary
