// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>

class QListWidget;
class QPushButton;
class QVBoxLayout;

namespace tessary {

class ReviewerModel;

// The left column: the photos (or pairs in Compare mode), the sessions and the ways to open more.
class Sidebar : public QWidget {
    Q_OBJECT

  public:
    static constexpr int columnWidth = 180;

    explicit Sidebar(ReviewerModel& model, QWidget* parent = nullptr);

    QListWidget* photoList() const { return photos_; }
    QPushButton* discoveryButton() const { return discover_; }
    QPushButton* openButton() const { return open_; }
    QPushButton* importButton() const { return import_; }

  private:
    void refreshPhotos();
    void refreshPresets();
    void refreshDiscovery();
    void choose(int row);

    ReviewerModel& model_;
    QListWidget* photos_;
    QWidget* sessions_;
    QVBoxLayout* sessionButtons_;
    QPushButton* discover_;
    QPushButton* open_;
    QPushButton* import_;
};

} // namespace tessary
