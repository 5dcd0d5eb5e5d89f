// SPDX-License-Identifier: Apache-2.0
// Opens a generated session of large photos through the core and compares the time with the
// same work done plainly on one core. Each measurement runs in a fresh process so that its peak
// memory is its own.
#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "samplegen.h"
#include "session_open_floor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

struct Settings {
    int photos = 20;
    double megapixels = 24;
    int runs = 5;
    fs::path folder;
};

struct Measurement {
    double seconds = 0;
    double cpuSeconds = 0; // all threads, user and system
    long peakKiB = 0;
};

double since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto toSeconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime);
}

// Prints "seconds cpuSeconds peakKiB" for the parent to read.
void report(Clock::time_point start, double cpuAtStart) {
    const double seconds = since(start);
    const double cpu = cpuSeconds() - cpuAtStart;
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%.6f %.6f %ld\n", seconds, cpu, usage.ru_maxrss);
}

dravik::ReviewDocument makeDocument(const fs::path& folder) {
    return dravik::ReviewStore::make(folder / "session.json", folder / "results.json");
}

// Child side: one measured open.
int measure(const std::string& mode, const fs::path& folder) {
    const fs::path manifest = folder / "session.json";
    if (mode == "core") {
        const double cpu = cpuSeconds();
        const auto start = Clock::now();
        const dravik::ReviewDocument document = makeDocument(folder);
        const std::vector<dravik::Image> panels = dravik::loadFramePhotos(document, manifest);
        report(start, cpu);
        return panels.empty() ? 1 : 0;
    }
    std::vector<tessary::bench::FloorPhoto> photos;
    const dravik::ReviewDocument document = makeDocument(folder);
    for (const dravik::ReviewFrame& frame : document.frames())
        photos.push_back({dravik::ReviewStore::assetURL(frame.file, manifest), frame.panel});
    const double cpu = cpuSeconds();
    const auto start = Clock::now();
    const auto panels = tessary::bench::decodeOnOneCore(photos);
    report(start, cpu);
    return panels.empty() ? 1 : 0;
}

Measurement spawnMeasurement(const std::string& mode, const fs::path& folder) {
    int pipeEnds[2];
    if (pipe(pipeEnds) != 0)
        throw std::runtime_error("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, pipeEnds[0]);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    const std::string folderText = folder.string();
    std::vector<char*> argv = {const_cast<char*>(self.c_str()), const_cast<char*>("--measure"),
                               const_cast<char*>(mode.c_str()),
                               const_cast<char*>(folderText.c_str()), nullptr};
    pid_t child = 0;
    const int spawned = posix_spawn(&child, self.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(pipeEnds[1]);
    if (spawned != 0) {
        close(pipeEnds[0]);
        throw std::runtime_error("cannot start a measurement");
    }
    std::string output;
    char buffer[256];
    for (ssize_t got; (got = read(pipeEnds[0], buffer, sizeof buffer)) > 0;)
        output.append(buffer, static_cast<std::size_t>(got));
    close(pipeEnds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    Measurement result;
    std::istringstream in(output);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 ||
        !(in >> result.seconds >> result.cpuSeconds >> result.peakKiB))
        throw std::runtime_error("the " + mode + " measurement failed: " + output);
    return result;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

void prepareSession(const Settings& settings) {
    const fs::path stamp = settings.folder / "bench-options.txt";
    char options[96];
    std::snprintf(options, sizeof options, "%d photos, %g MP, seed 1\n", settings.photos,
                  settings.megapixels);
    std::ifstream previous(stamp);
    std::string line;
    if (std::getline(previous, line) && line + "\n" == options &&
        fs::exists(settings.folder / "results.json")) {
        std::printf("Session: %s (kept from an earlier run)\n", settings.folder.c_str());
        return;
    }
    fs::remove_all(settings.folder);
    const auto start = Clock::now();
    tessary::samplegen::Options generate;
    generate.photos = settings.photos;
    generate.megapixels = settings.megapixels;
    tessary::samplegen::writeSession(settings.folder, generate);
    std::ofstream(stamp) << options;
    std::printf("Session: %s (generated in %.1f s)\n", settings.folder.c_str(), since(start));
}

void describeSession(const fs::path& folder) {
    const dravik::ReviewDocument document = makeDocument(folder);
    std::uintmax_t bytes = 0;
    double panelShare = 0;
    for (const dravik::ReviewFrame& frame : document.frames()) {
        bytes += fs::file_size(dravik::ReviewStore::assetURL(frame.file, folder / "session.json"));
        panelShare += frame.panel.width * frame.panel.height /
                      (double(frame.imageSize.width) * frame.imageSize.height);
    }
    const auto count = document.frames().size();
    const dravik::ImageSize size = document.frames().front().imageSize;
    std::printf("%zu photos of %d × %d, %.1f MB of JPEG, panels %.0f %% of each photo on "
                "average; %u hardware threads\n",
                count, size.width, size.height, bytes / 1e6, 100 * panelShare / double(count),
                std::thread::hardware_concurrency());
}

Settings parse(int argc, char** argv) {
    Settings settings;
    for (int i = 1; i < argc; ++i) {
        const std::string option = argv[i];
        if (i + 1 >= argc)
            throw std::runtime_error("missing value after " + option);
        const char* value = argv[++i];
        if (option == "--photos")
            settings.photos = std::atoi(value);
        else if (option == "--megapixels")
            settings.megapixels = std::atof(value);
        else if (option == "--runs")
            settings.runs = std::atoi(value);
        else if (option == "--folder")
            settings.folder = value;
        else
            throw std::runtime_error("unknown option " + option);
    }
    if (settings.photos < 1 || settings.megapixels <= 0 || settings.runs < 1)
        throw std::runtime_error("photos, megapixels and runs must be positive");
    if (settings.folder.empty()) {
        char name[64];
        std::snprintf(name, sizeof name, "tessary-session-open-%dx%g", settings.photos,
                      settings.megapixels);
        settings.folder = fs::temp_directory_path() / name;
    }
    return settings;
}

int run(const Settings& settings) {
    prepareSession(settings);
    describeSession(settings.folder);
    // Unmeasured once each, so that both find the files in the page cache.
    spawnMeasurement("floor", settings.folder);
    spawnMeasurement("core", settings.folder);
    std::vector<double> floorTimes, openTimes, ratios;
    std::vector<long> peaks;
    std::printf("\n     single-core floor     core open (all cores)\n"
                "run     wall      CPU        wall      CPU    ratio  core peak RSS\n");
    for (int run = 1; run <= settings.runs; ++run) {
        // Alternate the order so that neither always runs on a machine just warmed by the other.
        Measurement floor, open;
        if (run % 2) {
            floor = spawnMeasurement("floor", settings.folder);
            open = spawnMeasurement("core", settings.folder);
        } else {
            open = spawnMeasurement("core", settings.folder);
            floor = spawnMeasurement("floor", settings.folder);
        }
        floorTimes.push_back(floor.seconds);
        openTimes.push_back(open.seconds);
        ratios.push_back(open.seconds / floor.seconds);
        peaks.push_back(open.peakKiB);
        std::printf("%3d  %6.3f s  %6.3f s    %6.3f s  %6.3f s  %5.3f  %9.1f MiB\n", run,
                    floor.seconds, floor.cpuSeconds, open.seconds, open.cpuSeconds, ratios.back(),
                    open.peakKiB / 1024.0);
    }
    std::sort(peaks.begin(), peaks.end());
    const double ratio = median(ratios);
    std::printf("\nmedian of %d: core open %.3f s, single-core floor %.3f s, ratio %.3f "
                "(target ≤ 0.6: %s), core peak RSS %.1f MiB\n",
                settings.runs, median(openTimes), median(floorTimes), ratio,
                ratio <= 0.6 ? "met" : "missed", peaks[peaks.size() / 2] / 1024.0);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 4 && std::strcmp(argv[1], "--measure") == 0)
            return measure(argv[2], argv[3]);
        return run(parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "session_open: %s\n", error.what());
        return 1;
    }
}
