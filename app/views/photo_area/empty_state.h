#pragma once

#include <QWidget>

namespace tessary {

// The photo area before any photo is open: a person-in-a-frame symbol above a title.
class EmptyState : public QWidget {
    Q_OBJECT

  public:
    explicit EmptyState(const QString& title, QWidget* parent = nullptr);
    QString title() const { return title_; }

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString title_;
};

} // namespace tessary
