// SPDX-License-Identifier: Apache-2.0
#include "scaled_photo.h"

#include "gui_thread.h"
#include "job_queue.h"

#include <QCoreApplication>
#include <QPainter>
#include <QRegion>
#include <QTransform>
#include <cmath>
#include <string>

namespace tessary {

namespace {

// One thread for every canvas: a copy takes tens of milliseconds, and only the newest asked for
// by each canvas is worth making.
JobQueue& resampler() {
    static JobQueue queue(1, 4);
    // Nothing may still be painting or posting once the application is gone.
    static const bool drained = [] {
        qAddPostRoutine([] { queue.drain(); });
        return true;
    }();
    (void)drained;
    return queue;
}

QRect deviceRect(const QRectF& points, qreal ratio) {
    return QRectF(points.x() * ratio, points.y() * ratio, points.width() * ratio,
                  points.height() * ratio)
        .toAlignedRect();
}

// The whole pixels inside `points`: what a drawing there certainly covers.
QRect innerRect(const QRectF& points) {
    const QPoint topLeft(static_cast<int>(std::ceil(points.left())),
                         static_cast<int>(std::ceil(points.top())));
    const QPoint bottomRight(static_cast<int>(std::floor(points.right())) - 1,
                             static_cast<int>(std::floor(points.bottom())) - 1);
    return QRect(topLeft, bottomRight);
}

} // namespace

struct ScaledPhoto::Channel {
    std::function<void(Copy)> deliver;
};

ScaledPhoto::ScaledPhoto(std::function<void()> arrived) : channel_(std::make_shared<Channel>()) {
    channel_->deliver = [this, arrived = std::move(arrived)](Copy copy) {
        if (!asked_ || !asked_->sameView(copy.source) || asked_->region != copy.source.region)
            return; // asked for something else since
        asked_.reset();
        copy_ = std::move(copy);
        arrived();
    };
}

QRectF ScaledPhoto::Source::placedOn(const QRectF& nowCovers, const QRectF& nowTarget) const {
    const auto through = [](const QRectF& from, const QRectF& to) {
        return QTransform::fromTranslate(-from.x(), -from.y()) *
               QTransform::fromScale(to.width() / from.width(), to.height() / from.height()) *
               QTransform::fromTranslate(to.x(), to.y());
    };
    // Canvas points of then, through the photo's own pixels, to canvas points of now.
    const QRectF then(region.x() / ratio, region.y() / ratio, region.width() / ratio,
                      region.height() / ratio);
    return (through(target, covers) * through(nowCovers, nowTarget)).mapRect(then);
}

ScaledPhoto::~ScaledPhoto() {
    const std::string key = std::to_string(reinterpret_cast<std::uintptr_t>(this));
    resampler().withdrawIf([&](const std::string& waiting) { return waiting == key; });
}

bool ScaledPhoto::paint(QPainter& painter, const QRect& exposed, const QImage& photo,
                        const QRectF& covers, const QRectF& target, const QRect& visible,
                        QSize canvas, qreal ratio) {
    // A quarter of the view around what is visible, so that a short scroll stays sharp.
    const QRect around = visible.adjusted(-visible.width() / 4, -visible.height() / 4,
                                          visible.width() / 4, visible.height() / 4);
    const Source wanted{photo.cacheKey(), covers, target, ratio,
                        deviceRect(around & QRect(QPoint(0, 0), canvas), ratio)};
    const QRect exposedDevice = deviceRect(exposed, ratio);
    const bool current = copy_ && copy_->source.sameView(wanted);
    const bool covered = current && copy_->source.region.contains(exposedDevice);
    // A copy made for another zoom or decode still shows the same photo: scaled without
    // smoothing it is a fast blit, where the photo itself would be resampled span by span. It
    // stands in while it has at least half the photo's detail.
    const bool standsIn =
        copy_ && (current || copy_->source.detail() >= 0.5 * photo.width() / covers.width());
    const std::optional<QRectF> placed =
        standsIn ? std::optional(copy_->source.placedOn(covers, target)) : std::nullopt;
    const QRect inside = placed ? innerRect(*placed) : QRect();
    if (!covered && !inside.contains(exposed)) {
        // The best there is, scaled: smoothly when it is enlarged, where blocks would show.
        painter.save();
        painter.setClipRegion(QRegion(exposed).subtracted(inside), Qt::IntersectClip);
        painter.setRenderHint(QPainter::SmoothPixmapTransform,
                              photo.width() < target.width() * ratio);
        painter.drawImage(target, photo);
        painter.restore();
    }
    if (placed) {
        painter.save();
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.drawImage(*placed, copy_->image);
        painter.restore();
    }
    const bool askedAlready =
        asked_ && asked_->sameView(wanted) && asked_->region.contains(deviceRect(visible, ratio));
    if (!(current && copy_->source.region.contains(deviceRect(visible, ratio))) && !askedAlready &&
        !wanted.region.isEmpty())
        ask(photo, wanted);
    return covered;
}

void ScaledPhoto::ask(const QImage& photo, const Source& wanted) {
    asked_ = wanted;
    std::weak_ptr<Channel> channel = channel_;
    auto make = [photo, wanted, channel] {
        QImage image(wanted.region.size(), QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        const QRectF device(wanted.target.x() * wanted.ratio - wanted.region.x(),
                            wanted.target.y() * wanted.ratio - wanted.region.y(),
                            wanted.target.width() * wanted.ratio,
                            wanted.target.height() * wanted.ratio);
        const double perX = photo.width() / device.width();
        const double perY = photo.height() / device.height();
        if (perX < 2 && perY < 2) {
            painter.drawImage(device, photo); // the copy's bounds clip it to the region
        } else {
            // Much larger than wanted: bilinear sampling would skip pixels, so the part under
            // the region is averaged down first.
            const QRect under = QRectF(-device.x() * perX, -device.y() * perY, image.width() * perX,
                                       image.height() * perY)
                                    .toAlignedRect()
                                    .adjusted(-2, -2, 2, 2) &
                                photo.rect();
            const QImage view(photo.constBits() + under.y() * photo.bytesPerLine() +
                                  under.x() * (photo.depth() / 8),
                              under.width(), under.height(), photo.bytesPerLine(), photo.format());
            const QSize shrunk(static_cast<int>(std::ceil(under.width() / perX)),
                               static_cast<int>(std::ceil(under.height() / perY)));
            painter.drawImage(QRectF(device.x() + under.x() / perX, device.y() + under.y() / perY,
                                     under.width() / perX, under.height() / perY),
                              view.scaled(shrunk, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
        }
        painter.end();
        onGuiThread([channel, copy = Copy{wanted, std::move(image)}] {
            if (auto open = channel.lock())
                open->deliver(copy);
        });
    };
    resampler().submit(
        {std::to_string(reinterpret_cast<std::uintptr_t>(this)), 0, std::move(make)});
}

} // namespace tessary
