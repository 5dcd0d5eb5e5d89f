// SPDX-License-Identifier: Apache-2.0
// A track day's session: 50 and 200 photos of 24 MP opened by the review model and stepped
// through on a real canvas offscreen, in one run. Prints the open time against the single-core
// SHA-256 floor of the same files, peak resident memory after opening and after stepping, the
// time per step at four steps a second, and the GUI thread's longest stall during a zoom sweep
// and a joint drag at zoom 4, each beside its target.
//
//   session_scale [--distinct 8] [--megapixels 24] [--runs 3] [--folder DIR]
//
// The sessions are copies of `distinct` generated photos under their own names (generating
// hundreds of 24 MP photos takes long); every copy is a file of its own. Each session is opened in
// a fresh process, so that its peak memory is its own.
#include "dravik/joints.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "framed_photo_canvas.h"
#include "generated_photos.h"
#include "joint_canvas_view.h"
#include "photo_scroll_view.h"
#include "reviewer_model.h"
#include "samplegen.h"
#include "session_open_floor.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QMouseEvent>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr QSize paneSize(1400, 900);

struct Settings {
    int distinct = 8;
    double megapixels = 24;
    int runs = 3;
    fs::path folder;
};

using Figures = std::map<std::string, double>;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The time this thread actually ran, in milliseconds.
double threadMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double peakMiB() {
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::atof(line.c_str() + 6) / 1024;
    return 0;
}

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1))];
}

double median(const std::vector<double>& values) {
    return percentile(values, 0.5);
}

// Runs the event loop for `milliseconds`, as a window waiting for the reviewer does.
void idle(int milliseconds) {
    QEventLoop loop;
    QTimer::singleShot(std::max(milliseconds, 0), Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}

// Runs the event loop until `done`, or gives up after five seconds.
bool idleUntil(const std::function<bool()>& done) {
    const auto start = Clock::now();
    while (!done()) {
        if (millisecondsSince(start) > 5000)
            return false;
        QApplication::processEvents(QEventLoop::AllEvents, 1);
        if (!done())
            idle(1);
    }
    return true;
}

// The longest the GUI thread kept a 1 ms timer waiting past its time while it ran.
class StallMeter {
  public:
    StallMeter() {
        timer_.setTimerType(Qt::PreciseTimer);
        timer_.setInterval(1);
        QObject::connect(&timer_, &QTimer::timeout, [this] {
            const auto now = Clock::now();
            const double cpu = threadMilliseconds();
            worst_ = std::max(worst_,
                              std::chrono::duration<double, std::milli>(now - last_).count() - 1.0);
            worstCpu_ = std::max(worstCpu_, cpu - lastCpu_);
            last_ = now;
            lastCpu_ = cpu;
        });
    }
    void start() {
        worst_ = worstCpu_ = 0;
        last_ = Clock::now();
        lastCpu_ = threadMilliseconds();
        timer_.start();
    }
    // The worst lateness, and the most CPU time the GUI thread spent between two ticks: on a busy
    // machine the first also counts the waits for a core.
    std::pair<double, double> stop() {
        timer_.stop();
        return {worst_, worstCpu_};
    }

  private:
    QTimer timer_;
    Clock::time_point last_;
    double lastCpu_ = 0;
    double worst_ = 0;
    double worstCpu_ = 0;
};

std::unique_ptr<tessary::FramedPhotoCanvas> showFrame(tessary::ReviewerModel& model,
                                                      const std::string& frameID) {
    auto shown = std::make_unique<tessary::FramedPhotoCanvas>(model, frameID);
    shown->resize(paneSize);
    shown->show();
    return shown;
}

bool paintedInDetail(const tessary::FramedPhotoCanvas& shown) {
    const tessary::JointCanvasView* canvas = shown.canvas();
    return canvas && canvas->painted().photoKey != 0 && canvas->painted().detailed;
}

void setZoom(tessary::ReviewerModel& model, const std::string& frameID, double zoom) {
    tessary::Presentation settings = model.settings(frameID);
    settings.autoFrame = false;
    settings.zoom = zoom;
    model.setSettings(frameID, settings);
}

void mouse(QWidget* widget, QEvent::Type type, QPointF at, Qt::MouseButtons buttons) {
    QMouseEvent event(type, at, widget->mapToGlobal(at), Qt::LeftButton, buttons, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// The joint drawn nearest the middle of what the canvas shows, in canvas points.
QPointF jointNearTheMiddle(const tessary::FramedPhotoCanvas& shown,
                           const dravik::ReviewFrame& frame) {
    const tessary::JointCanvasView* canvas = shown.canvas();
    const QWidget* clip = shown.scrollView()->viewport();
    const QPointF middle = canvas->mapFrom(clip, QPointF(clip->rect().center()));
    QPointF nearest = middle;
    double best = 1e300;
    for (const std::string& joint : dravik::InspectionRenderer::jointNames())
        if (auto point = frame.displayPoint(joint, "3D")) {
            const dravik::Point2 view =
                dravik::ReviewCoordinates::display(*point, frame.panel, canvas->scale());
            const double d = std::hypot(view.x - middle.x(), view.y - middle.y());
            if (d < best) {
                best = d;
                nearest = {view.x, view.y};
            }
        }
    return nearest;
}

void fail(const std::string& what) {
    throw std::runtime_error(what);
}

// Child side: opens the session, steps through it and, when asked, measures the stalls. Prints
// "name value" lines for the parent.
int measure(const fs::path& session, bool openOnly, int argc, char** argv) {
    QApplication application(argc, argv);
    tessary::ReviewerModel model(tessary::Bundle(session / "bundle"),
                                 std::make_shared<tessary::CancellingFileChooser>());
    Figures figures;

    // The window has drawn text before a session is opened: fonts are not part of opening.
    QLabel warm(QStringLiteral("Open a photo session · 0123456789"));
    warm.grab();

    // Open: until the first frame is painted at the resolution its pane needs.
    const auto opening = Clock::now();
    model.load(session / "session.json", session / "results.json");
    figures["openLoad"] = millisecondsSince(opening);
    if (model.error() || !model.frame())
        fail(model.error().value_or("no frame after opening"));
    auto shown = showFrame(model, *model.activeFrameID());
    if (!idleUntil([&] { return paintedInDetail(*shown); }))
        fail("the first frame was never painted in detail");
    figures["open"] = millisecondsSince(opening);
    figures["peakOpen"] = peakMiB();
    if (!openOnly) {
        // Stepping at four photos a second, each step until its photo is painted in detail.
        idle(250);
        const auto frames = static_cast<std::int64_t>(model.document()->frames().size());
        std::vector<double> steps, stepsCpu;
        for (std::int64_t index = 1; index < frames; ++index) {
            const auto start = Clock::now();
            const double cpuAtStart = threadMilliseconds();
            model.selectFrame(index);
            if (model.error())
                fail(*model.error());
            shown = showFrame(model, *model.activeFrameID());
            if (!idleUntil([&] { return paintedInDetail(*shown); }))
                fail("frame " + std::to_string(index) + " was never painted in detail");
            steps.push_back(millisecondsSince(start));
            stepsCpu.push_back(threadMilliseconds() - cpuAtStart);
            idle(250 - static_cast<int>(millisecondsSince(start)));
        }
        figures["stepMedian"] = median(steps);
        figures["stepP99"] = percentile(steps, 0.99);
        figures["stepMax"] = *std::max_element(steps.begin(), steps.end());
        figures["stepCpuMedian"] = median(stepsCpu);
        figures["stepCpuP99"] = percentile(stepsCpu, 0.99);
        figures["peakStepped"] = peakMiB();

        // The zoom slider swept 1× → 4× → 1× in 60 steps of 30 ms each.
        const std::string frameID = *model.activeFrameID();
        setZoom(model, frameID, 1.0);
        idle(500);
        StallMeter meter;
        meter.start();
        for (int step = 1; step <= 60; ++step) {
            const double zoom = step <= 30 ? 1.0 + 3.0 * step / 30 : 4.0 - 3.0 * (step - 30) / 30;
            setZoom(model, frameID, zoom);
            idle(30);
        }
        idle(300);
        std::tie(figures["stallZoom"], figures["stallZoomCpu"]) = meter.stop();

        // A joint dragged through 50 moves at zoom 4, one every 16 ms, then released; three
        // times, since the release's save waits for a disk that other machines share.
        setZoom(model, frameID, 4.0);
        if (!idleUntil([&] { return paintedInDetail(*shown); }))
            fail("zoom 4 was never painted in detail");
        idle(300);
        tessary::JointCanvasView* canvas = shown->canvas();
        std::vector<double> drags, dragsCpu;
        for (int drag = 1; drag <= 3; ++drag) {
            const QPointF grab = jointNearTheMiddle(*shown, *model.frame(frameID));
            const std::size_t undoBefore = model.undoStack().size();
            meter.start();
            mouse(canvas, QEvent::MouseButtonPress, grab, Qt::LeftButton);
            for (int move = 1; move <= 50; ++move) {
                mouse(canvas, QEvent::MouseMove, grab + QPointF(move, move / 2.0), Qt::LeftButton);
                idle(16);
            }
            mouse(canvas, QEvent::MouseButtonRelease, grab + QPointF(50, 25), Qt::NoButton);
            idle(100);
            const auto [stall, cpu] = meter.stop();
            if (model.undoStack().size() != undoBefore + 1)
                fail("drag " + std::to_string(drag) + " committed nothing");
            figures["stallDrag" + std::to_string(drag)] = stall;
            drags.push_back(stall);
            dragsCpu.push_back(cpu);
            idle(300);
        }
        figures["stallDrag"] = median(drags);
        figures["stallDragCpu"] = *std::max_element(dragsCpu.begin(), dragsCpu.end());
    }
    for (const auto& [name, value] : figures)
        std::printf("%s %.6f\n", name.c_str(), value);
    return 0;
}

Figures spawnMeasurement(const fs::path& session, bool openOnly) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        fail("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const std::string folder = session.string();
    std::vector<char*> argv = {const_cast<char*>(self.c_str()),
                               const_cast<char*>(openOnly ? "--open" : "--session"),
                               const_cast<char*>(folder.c_str()), nullptr};
    pid_t child = 0;
    const int spawned = posix_spawn(&child, self.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    if (spawned != 0) {
        close(pipeEnds[0]);
        fail("cannot start a measurement");
    }
    std::string output;
    char buffer[256];
    for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, static_cast<std::size_t>(got));
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        fail("the measurement of " + folder + " failed");
    Figures figures;
    std::istringstream in(output);
    std::string name;
    for (double value = 0; in >> name >> value;)
        figures[name] = value;
    return figures;
}

// A session of `photos` copies of the generated photos, fresh each run so that no saved review of
// an earlier run is opened.
fs::path prepareSession(const Settings& settings, int photos) {
    const fs::path source =
        tessary::bench::generatedPhotos(settings.folder, settings.distinct, settings.megapixels);
    const fs::path session = settings.folder / ("session-" + std::to_string(photos));
    fs::remove_all(session);
    tessary::samplegen::writeCopiedSession(source, session, photos);
    return session;
}

std::vector<fs::path> photoFiles(const fs::path& session) {
    const fs::path manifest = session / "session.json";
    const dravik::ReviewDocument document =
        dravik::ReviewStore::make(manifest, session / "results.json");
    std::vector<fs::path> files;
    for (const dravik::ReviewFrame& frame : document.frames())
        files.push_back(dravik::ReviewStore::assetURL(frame.file, manifest));
    return files;
}

std::string loadAverage() {
    std::ifstream in("/proc/loadavg");
    std::string one;
    in >> one;
    return one;
}

const char* verdict(bool met) {
    return met ? "met" : "MISSED";
}

Settings parse(int argc, char** argv) {
    Settings settings;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc)
            fail("missing value after " + option);
        const char* value = argv[++i];
        if (option == "--distinct")
            settings.distinct = std::atoi(value);
        else if (option == "--megapixels")
            settings.megapixels = std::atof(value);
        else if (option == "--runs")
            settings.runs = std::atoi(value);
        else if (option == "--folder")
            settings.folder = value;
        else
            fail("unknown option " + option);
    }
    if (settings.distinct < 1 || settings.megapixels <= 0 || settings.runs < 1)
        fail("distinct, megapixels and runs must be positive");
    if (settings.folder.empty())
        settings.folder = fs::temp_directory_path() / "tessary-session-scale";
    return settings;
}

int run(const Settings& settings) {
    const std::string startLoad = loadAverage();
    std::map<int, Figures> sessions;
    std::vector<double> floors, opens, ratios;
    for (int photos : {50, 200}) {
        const fs::path session = prepareSession(settings, photos);
        // Written back before anything is measured: a save's fdatasync would otherwise queue
        // behind hundreds of megabytes of fresh copies, which a reviewer's disk does not hold.
        ::sync();
        const std::vector<fs::path> files = photoFiles(session);
        std::uintmax_t bytes = 0;
        for (const fs::path& file : files)
            bytes += fs::file_size(file);
        std::printf("%d photos, %.0f MB of JPEG; %u hardware threads\n", photos, bytes / 1e6,
                    std::thread::hardware_concurrency());
        tessary::bench::hashOnOneCore(files); // unmeasured: every file is in the page cache
        if (photos == 200) {
            std::printf("\nopen of 200 photos against the floor (SHA-256 on one core):\n"
                        "run     floor      open     ratio\n");
            for (int run = 1; run <= settings.runs; ++run) {
                // Alternated, so that neither always runs on a machine just warmed by the other.
                double floor = 0, open = 0;
                for (int turn = 0; turn < 2; ++turn) {
                    if ((turn == 0) == (run % 2 == 1)) {
                        const auto start = Clock::now();
                        tessary::bench::hashOnOneCore(files);
                        floor = millisecondsSince(start);
                    } else {
                        open = spawnMeasurement(session, true).at("open");
                    }
                }
                floors.push_back(floor);
                opens.push_back(open);
                ratios.push_back(open / floor);
                std::printf("%3d  %6.0f ms  %6.0f ms  %6.3f\n", run, floor, open, ratios.back());
            }
            std::printf("\n");
        }
        sessions[photos] = spawnMeasurement(session, false);
    }

    const double ratio = median(ratios);
    std::printf("\nfigure                                      50 photos  200 photos  target\n");
    const Figures& small = sessions.at(50);
    const Figures& large = sessions.at(200);
    auto row = [&](const char* name, const char* key, const char* unit, const char* target,
                   bool met) {
        std::printf("%-42s %8.1f %s %8.1f %s  %s: %s\n", name, small.at(key), unit, large.at(key),
                    unit, target, verdict(met));
    };
    std::printf("%-42s %11s %8.0f ms  median of %d; floor %.0f ms, ratio %.3f (≤ 0.8): %s\n",
                "open (load until the first frame is painted)", "", median(opens), settings.runs,
                median(floors), ratio, verdict(ratio <= 0.8));
    row("open, the stepping run", "open", "ms ", "for reference", true);
    row("  of which load() alone", "openLoad", "ms ", "for reference", true);
    row("peak RSS after opening", "peakOpen", "MiB", "≤ 700 MiB",
        small.at("peakOpen") <= 700 && large.at("peakOpen") <= 700);
    const double apart = std::abs(large.at("peakStepped") - small.at("peakStepped"));
    row("peak RSS after stepping through every frame", "peakStepped", "MiB",
        "≤ 700 MiB, within 64 MiB",
        small.at("peakStepped") <= 700 && large.at("peakStepped") <= 700 && apart <= 64);
    row("step at 4 a second, median", "stepMedian", "ms ", "≤ 30 ms",
        small.at("stepMedian") <= 30 && large.at("stepMedian") <= 30);
    row("step at 4 a second, p99", "stepP99", "ms ", "≤ 120 ms",
        small.at("stepP99") <= 120 && large.at("stepP99") <= 120);
    row("step at 4 a second, longest", "stepMax", "ms ", "for reference", true);
    row("  GUI thread CPU per step, median", "stepCpuMedian", "ms ", "for reference", true);
    row("  GUI thread CPU per step, p99", "stepCpuP99", "ms ", "for reference", true);
    row("longest GUI stall, zoom sweep 1× → 4× → 1×", "stallZoom", "ms ", "≤ 20 ms",
        small.at("stallZoom") <= 20 && large.at("stallZoom") <= 20);
    row("  most GUI thread CPU between ticks", "stallZoomCpu", "ms ", "for reference", true);
    row("longest GUI stall, drag at zoom 4, median", "stallDrag", "ms ", "≤ 20 ms",
        small.at("stallDrag") <= 20 && large.at("stallDrag") <= 20);
    for (const char* key : {"stallDrag1", "stallDrag2", "stallDrag3"})
        row(key[9] == '1' ? "  each of the three drags" : "", key, "ms ", "for reference", true);
    row("  most GUI thread CPU between ticks", "stallDragCpu", "ms ", "for reference", true);
    std::printf("peak RSS after stepping: 50 and 200 photos %.1f MiB apart; load average %s at "
                "the start, %s at the end\n",
                apart, startLoad.c_str(), loadAverage().c_str());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 3 &&
            (std::strcmp(argv[1], "--open") == 0 || std::strcmp(argv[1], "--session") == 0)) {
            if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
                qputenv("QT_QPA_PLATFORM", "offscreen");
            // The offscreen platform's notices would bury the figures.
            qInstallMessageHandler(
                [](QtMsgType type, const QMessageLogContext&, const QString& text) {
                    if (type == QtCriticalMsg || type == QtFatalMsg)
                        std::fprintf(stderr, "%s\n", qPrintable(text));
                });
            return measure(argv[2], std::strcmp(argv[1], "--open") == 0, argc, argv);
        }
        std::setvbuf(stdout, nullptr, _IOLBF, 0);
        return run(parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "session_scale: %s\n", error.what());
        return 1;
    }
}
