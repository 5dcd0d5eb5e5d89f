// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "framed_photo_canvas.h"
#include "joint_canvas_view.h"
#include "model_fixture.h"
#include "photo_scroll_view.h"

#include <QApplication>
#include <QMouseEvent>
#include <cmath>
#include <memory>

namespace tessary::test {

// The bundled sample open, without its companion files unless asked, and ways to show a frame's
// canvas and point at what it draws.
class CanvasTest : public ModelTest {
  protected:
    void SetUp() override { session = openBundled(); }
    // Framing regions and lean proposals too; the sample then opens in lean mode.
    void openWithCompanions() {
        session = openBundled("with-companions", true);
        ASSERT_FALSE(model.leanProposals().empty());
    }

    std::unique_ptr<FramedPhotoCanvas> showFrame(const std::string& frameID,
                                                 QSize size = {1400, 900}) {
        auto shown = std::make_unique<FramedPhotoCanvas>(model, frameID);
        shown->resize(size);
        shown->show();
        QApplication::processEvents();
        return shown;
    }

    QPointF viewOf(const JointCanvasView& canvas, const dravik::Point2& source) const {
        const auto view = dravik::ReviewCoordinates::display(
            source, frameOf(canvas.frameID()).panel, canvas.scale());
        return {view.x, view.y};
    }
    dravik::Point2 sourceOf(const JointCanvasView& canvas, QPointF view) const {
        return dravik::ReviewCoordinates::source({view.x(), view.y()},
                                                 frameOf(canvas.frameID()).panel, canvas.scale());
    }
    dravik::Point2 displayed(const std::string& frameID, const std::string& joint) const {
        return frameOf(frameID).displayPoint(joint, model.settings(frameID).kind).value();
    }
    QPointF jointOn(const JointCanvasView& canvas, const std::string& joint) const {
        return viewOf(canvas, displayed(canvas.frameID(), joint));
    }

    SessionFiles session;
};

// Mouse events at fractional positions, for boundaries that whole points cannot reach.
inline void sendMouse(QWidget* widget, QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
    QMouseEvent event(type, at, widget->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}
inline void pressAt(QWidget* w, QPointF at) {
    sendMouse(w, QEvent::MouseButtonPress, at, Qt::LeftButton);
}
inline void moveTo(QWidget* w, QPointF at) {
    sendMouse(w, QEvent::MouseMove, at, Qt::LeftButton);
}
inline void releaseAt(QWidget* w, QPointF at) {
    sendMouse(w, QEvent::MouseButtonRelease, at, Qt::NoButton);
}
// Presses at the first point, moves through the others and releases at the last.
inline void dragThrough(QWidget* w, std::initializer_list<QPointF> points) {
    pressAt(w, *points.begin());
    for (QPointF at : points)
        moveTo(w, at);
    releaseAt(w, *(points.end() - 1));
}

// A point exactly `distance` away along an axis, as the canvas measures it in floating point.
inline QPointF exactlyAway(QPointF from, double distance) {
    for (QPointF to : {from + QPointF(distance, 0), from - QPointF(distance, 0)})
        if (std::hypot(to.x() - from.x(), to.y() - from.y()) == distance)
            return to;
    ADD_FAILURE() << "no point exactly " << distance << " away";
    return from;
}

} // namespace tessary::test
