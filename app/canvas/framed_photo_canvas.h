// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QWidget>
#include <string>

namespace tessary {

class JointCanvasView;
class PhotoScrollView;
class ReviewerModel;

// One frame's photo as the views place it: the scroll view with its joint canvas, kept in step
// with the model. Views create it for a frame id and never drive it otherwise.
class FramedPhotoCanvas : public QWidget {
    Q_OBJECT

  public:
    FramedPhotoCanvas(ReviewerModel& model, std::string frameID, QWidget* parent = nullptr);
    ~FramedPhotoCanvas() override;

    const std::string& frameID() const { return frameID_; }
    // The zoom last reported by the scroll view.
    double displayedZoom() const { return displayedZoom_; }
    // The parts inside, for tests and measurements; the canvas is replaced with every new
    // canvas generation of the model.
    JointCanvasView* canvas() const;
    PhotoScrollView* scrollView() const;

  signals:
    void zoomChanged(double zoom);

  private:
    void rebuildCanvas();
    void refresh();

    ReviewerModel& model_;
    std::string frameID_;
    PhotoScrollView* scrollView_ = nullptr;
    double displayedZoom_ = 1.0;
};

} // namespace tessary
