// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <string>

class QCheckBox;
class QComboBox;
class QFrame;
class QLabel;
class QPushButton;
class QSlider;

namespace tessary {

class FramedPhotoCanvas;
class ReviewerModel;
struct Presentation;

// One photo with its own presentation controls: detection kind, zoom and framing.
class FramePane : public QWidget {
    Q_OBJECT

  public:
    FramePane(ReviewerModel& model, std::string frameID, QWidget* parent = nullptr);

    const std::string& frameID() const { return frameID_; }
    // The zoom the photo currently shows, as the canvas reports it.
    double displayedZoom() const;
    // The keyboard's zoom: one step in (+1) or out (−1) around the middle of the photo shown.
    void zoomStep(int direction);
    // The whole photo at 1×, as "Full photo" shows it.
    void showWholePhoto();

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    void refresh();
    void showZoom(double zoom);

    ReviewerModel& model_;
    std::string frameID_;
    QPushButton* header_;
    QWidget* options_;
    QComboBox* kind_;
    QCheckBox* showRaw_;
    QFrame* outline_;
    FramedPhotoCanvas* canvas_;
    QLabel* caption_;
    QPushButton* fit_;
    QPushButton* full_;
    QSlider* zoom_;
    QLabel* zoomLabel_;
};

} // namespace tessary
