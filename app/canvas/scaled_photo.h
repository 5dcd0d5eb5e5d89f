// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QImage>
#include <QRect>
#include <QRectF>
#include <QSize>
#include <functional>
#include <memory>
#include <optional>

class QPainter;

namespace tessary {

// How a canvas draws its photo without resampling it on the GUI thread. Painting copies from a
// display copy: the part of the photo around what is visible, resampled smoothly to device
// pixels on a worker thread. Until the copy for the current photo, scale and scroll position is
// there, the photo itself is drawn scaled and the copy is asked for; `arrived` is called on the
// GUI thread when it comes.
class ScaledPhoto {
  public:
    explicit ScaledPhoto(std::function<void()> arrived);
    ~ScaledPhoto();
    ScaledPhoto(const ScaledPhoto&) = delete;
    ScaledPhoto& operator=(const ScaledPhoto&) = delete;

    // Draws the part in `exposed` of `photo`, which shows `covers` of the source photo (in its
    // pixels) and lands on `target`; the rest in canvas points. `visible` is the part of the
    // canvas on screen, `canvas` its size. True when it was drawn from the display copy alone.
    bool paint(QPainter& painter, const QRect& exposed, const QImage& photo, const QRectF& covers,
               const QRectF& target, const QRect& visible, QSize canvas, qreal ratio);

  private:
    // What a display copy is made from; the region is in device pixels of the canvas.
    struct Source {
        qint64 photoKey = 0;
        QRectF covers;
        QRectF target;
        qreal ratio = 0;
        QRect region;
        bool sameView(const Source& other) const {
            return photoKey == other.photoKey && target == other.target && ratio == other.ratio;
        }
        // Device pixels per pixel of the source photo.
        double detail() const { return target.width() * ratio / covers.width(); }
        // Where the region lands on a canvas that now shows `nowCovers` on `nowTarget`.
        QRectF placedOn(const QRectF& nowCovers, const QRectF& nowTarget) const;
    };
    struct Copy {
        Source source;
        QImage image;
    };
    struct Channel; // outlived safely by the worker making a copy

    void ask(const QImage& photo, const Source& wanted);

    std::shared_ptr<Channel> channel_;
    std::optional<Copy> copy_;
    std::optional<Source> asked_;
};

} // namespace tessary
