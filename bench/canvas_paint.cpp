// SPDX-License-Identifier: Apache-2.0
// Paint time of the photo canvas: a 1400 × 900 window over a 24 MP panel with its 19 joint
// markers, bones and lean lines, at zoom 1 and 4, and while a joint is dragged.
//
//   canvas_paint [folder]   (default: a folder under the system's temporary directory, kept
//                            between runs because generating the photo takes a while)

#include "dravik/joints.h"
#include "framed_photo_canvas.h"
#include "joint_canvas_view.h"
#include "photo_scroll_view.h"
#include "reviewer_model.h"
#include "samplegen.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double millisecondsOf(const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double threadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

// Wall time, and the time this thread actually ran: on a busy machine the first includes waits
// for a core that have nothing to do with painting.
struct Times {
    std::vector<double> wall;
    std::vector<double> cpu;
    void measure(const std::function<void()>& work) {
        const double cpuStart = threadMilliseconds();
        wall.push_back(millisecondsOf(work));
        cpu.push_back(threadMilliseconds() - cpuStart);
    }
};

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

void report(const char* name, const Times& times) {
    std::printf("%-22s n=%-4zu wall: median %6.3f ms  p99 %6.3f ms  max %6.3f ms   "
                "cpu: median %6.3f ms  p99 %6.3f ms\n",
                name, times.wall.size(), percentile(times.wall, 0.5), percentile(times.wall, 0.99),
                *std::max_element(times.wall.begin(), times.wall.end()), percentile(times.cpu, 0.5),
                percentile(times.cpu, 0.99));
}

void mouse(QWidget* widget, QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
    QMouseEvent event(type, at, widget->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

void setZoom(tessary::ReviewerModel& model, const std::string& frameID, double zoom) {
    tessary::Presentation settings = model.settings(frameID);
    settings.autoFrame = false;
    settings.zoom = zoom;
    model.setSettings(frameID, settings);
}

} // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);

    // The generated panel is about 60 % of the photo, so 40 MP photos give a 24 MP panel.
    const fs::path folder =
        argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path() / "tessary-canvas-paint";
    if (!fs::exists(folder / "results.json")) {
        std::printf("generating a 40 MP photo in %s ...\n", folder.c_str());
        tessary::samplegen::Options options;
        options.photos = 1;
        options.megapixels = 40;
        tessary::samplegen::writeSession(folder, options);
    }

    tessary::ReviewerModel model(tessary::Bundle(folder / "bundle"),
                                 std::make_shared<tessary::CancellingFileChooser>());
    const double openTime =
        millisecondsOf([&] { model.load(folder / "session.json", folder / "results.json"); });
    if (model.error() || !model.frame()) {
        std::fprintf(stderr, "%s\n", model.error().value_or("no frame").c_str());
        return 1;
    }
    // A copy: every committed edit replaces the document the model's frames live in.
    const dravik::ReviewFrame frame = *model.frame();
    // Lean lines placed as a reviewer would: two clicks per line.
    model.setLeanMode(true);
    const dravik::PixelRect& panel = frame.panel;
    auto at = [&](double fx, double fy) {
        return dravik::Point2{panel.x + fx * panel.width, panel.y + fy * panel.height};
    };
    for (bool reference : {false, true}) {
        model.beginLeanPlacement(reference);
        model.placeLean(reference ? at(0.3, 0.8) : at(0.45, 0.75), frame.id);
        model.placeLean(reference ? at(0.7, 0.8) : at(0.55, 0.45), frame.id);
    }
    model.setLeanMode(false);
    model.setShowMarkers(true);
    model.setShowLean(true);
    int markers = 0;
    for (const std::string& joint : dravik::InspectionRenderer::jointNames())
        markers += frame.displayPoint(joint, "3D").has_value();
    std::printf("panel %.0f × %.0f (%.1f MP), %d markers, lean lines %s, opened in %.0f ms\n",
                frame.panel.width, frame.panel.height, frame.panel.width * frame.panel.height / 1e6,
                markers, model.lean(frame.id) ? "shown" : "absent", openTime);

    tessary::FramedPhotoCanvas shown(model, frame.id);
    shown.resize(1400, 900);
    shown.show();
    QApplication::processEvents();

    // Everything the window shows, painted into an image of the window's size by the same
    // raster engine that fills the window's backing store.
    QImage target(shown.size(), QImage::Format_ARGB32_Premultiplied);
    auto paint = [&] {
        QPainter painter(&target);
        shown.render(&painter);
    };

    constexpr int frames = 300;
    for (double zoom : {1.0, 4.0}) {
        const double first = millisecondsOf([&] {
            setZoom(model, frame.id, zoom);
            paint();
        });
        Times times;
        for (int i = 0; i < frames; ++i)
            times.measure(paint);
        std::printf("zoom %.0f: scale %.4f, first paint after the zoom is set (resamples the photo "
                    "when the scale changed) %.1f ms\n",
                    zoom, shown.canvas()->scale(), first);
        report(zoom == 1.0 ? "  paint, zoom 1" : "  paint, zoom 4", times);
    }

    // A drag of the joint nearest the middle of the view, 50 moves, each painted.
    for (double zoom : {1.0, 4.0}) {
        setZoom(model, frame.id, zoom);
        paint();
        tessary::JointCanvasView* canvas = shown.canvas();
        const QWidget* clip = shown.scrollView()->viewport();
        const QPointF middle = canvas->mapFrom(clip, QPointF(clip->rect().center()));
        std::string nearest;
        QPointF grab;
        double best = 1e300;
        const dravik::ReviewFrame current = *model.frame(frame.id);
        for (const std::string& joint : dravik::InspectionRenderer::jointNames())
            if (auto point = current.displayPoint(joint, "3D")) {
                const dravik::Point2 view =
                    dravik::ReviewCoordinates::display(*point, frame.panel, canvas->scale());
                const double d = std::hypot(view.x - middle.x(), view.y - middle.y());
                if (d < best) {
                    best = d;
                    nearest = joint;
                    grab = {view.x, view.y};
                }
            }
        mouse(canvas, QEvent::MouseButtonPress, grab, Qt::LeftButton);
        Times times;
        for (int i = 1; i <= 50; ++i) {
            mouse(canvas, QEvent::MouseMove, grab + QPointF(i, i / 2.0), Qt::LeftButton);
            times.measure(paint);
        }
        const double release = millisecondsOf([&] {
            mouse(canvas, QEvent::MouseButtonRelease, grab + QPointF(50, 25), Qt::NoButton);
            paint();
        });
        report(zoom == 1.0 ? "  drag paint, zoom 1" : "  drag paint, zoom 4", times);
        std::printf("  release (commit, save, paint) %.1f ms; %s moved, %zu undo entries\n",
                    release, nearest.c_str(), model.undoStack().size());
    }
    return 0;
}
