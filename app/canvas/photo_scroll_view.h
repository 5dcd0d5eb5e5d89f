// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"
#include "dravik/uuid.h"
#include "photo_viewport.h"

#include <QAbstractScrollArea>
#include <QPointer>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tessary {

class JointCanvasView;
class ReviewerModel;

// The scrollable document: the photo canvas sits in it at the viewport's image origin, with
// room around it so that any target centre can be scrolled to the middle. Its coordinates run
// from the top left, y downwards, like the photo's pixels.
class PhotoDocumentView : public QWidget {
    Q_OBJECT

  public:
    explicit PhotoDocumentView(QWidget* parent = nullptr);

  protected:
    void paintEvent(QPaintEvent* event) override;
};

// Shows one frame's canvas at the scale PhotoViewport computes for the presentation's zoom and
// framing, and remembers in the model where the reviewer was looking.
class PhotoScrollView : public QAbstractScrollArea {
    Q_OBJECT

  public:
    // What the layout depends on; an unchanged configuration is not laid out again.
    struct Configuration {
        std::string frameID;
        dravik::Uuid sessionID;
        ViewSize viewport;
        bool autoFrame = true;
        double zoom = 1.0;
        std::int64_t request = 0;
        std::optional<dravik::PixelRect> region;
        bool operator==(const Configuration&) const = default;
    };

    PhotoScrollView(ReviewerModel& model, std::string frameID, QWidget* parent = nullptr);

    // Puts a canvas in the document in place of the current one, at the applied geometry.
    void setCanvas(JointCanvasView* canvas);
    JointCanvasView* canvas() const { return canvas_; }
    PhotoDocumentView* document() const { return document_; }

    // Lays out again when the model's presentation, session or framing asks for another view.
    void configure();
    const std::optional<PhotoViewport>& geometry() const { return geometry_; }
    double currentZoom() const { return currentZoom_; }
    std::function<void(double)> onZoom;
    // Zooms to `zoom` (kept within 1–4×) so that the photo point under `at` (viewport points)
    // stays under it, as the photo tools do for Ctrl + wheel.
    void zoomAround(QPointF at, double zoom);

    // One notch of Ctrl + wheel, and the keyboard's zoom steps, multiply the zoom by this.
    static constexpr double zoomStep = 1.25;

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void wheelEvent(QWheelEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    std::optional<Configuration> configuration() const;
    void layoutDocument();
    void placeDocument();
    void rememberCenter();

    QPointer<ReviewerModel> model_;
    std::string frameID_;
    PhotoDocumentView* document_;
    JointCanvasView* canvas_ = nullptr;
    std::optional<Configuration> applied_;
    std::optional<PhotoViewport> geometry_;
    bool applying_ = false;
    // Panning: with the middle button, or the left one while Space is held, the photo follows
    // the mouse instead of being edited.
    bool spaceHeld_ = false;
    std::optional<QPointF> panFrom_; // global position of the last pan step
    bool resizedWhileApplying_ = false;
    double currentZoom_ = 1.0;
};

} // namespace tessary
