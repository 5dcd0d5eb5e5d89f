// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QTimer>
#include <QWidget>

namespace tessary {

// A small spinning progress indicator; it turns while it is visible.
class BusySpinner : public QWidget {
    Q_OBJECT

  public:
    explicit BusySpinner(QWidget* parent = nullptr);
    QSize sizeHint() const override { return {16, 16}; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QTimer timer_;
    int step_ = 0;
};

} // namespace tessary
