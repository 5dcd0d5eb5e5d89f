// SPDX-License-Identifier: Apache-2.0
// Verifying a large session's photos for opening (read, hash, header; no pixels) through the core
// on all cores, against the floor of the same files read and hashed with SHA-256 on one core, in
// one run; then the time to decode one panel at each DCT scale.
//
//   photo_verify [--photos 200] [--distinct 8] [--megapixels 24] [--runs 5] [--folder DIR]
//
// The session holds `photos` files, copies of `distinct` generated photos under their own names
// (generating hundreds of 24 MP photos takes long); every copy is a file of its own on disk.
#include "dravik/detection.h"
#include "dravik/image.h"
#include "dravik/manifest.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "generated_photos.h"
#include "samplegen.h"
#include "session_open_floor.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <vector>

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

struct Settings {
    int photos = 200;
    int distinct = 8;
    double megapixels = 24;
    int runs = 5;
    fs::path folder;
};

double since(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

double cpuSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::string loadAverage() {
    std::ifstream in("/proc/loadavg");
    double one = 0;
    in >> one;
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", one);
    return text;
}

// The peak resident memory since the last reset, in MiB; resetting it makes the peak of one
// step its own.
double peakMiB(bool reset = false) {
    if (reset) {
        std::ofstream("/proc/self/clear_refs") << "5";
        return 0;
    }
    std::ifstream in("/proc/self/status");
    for (std::string line; std::getline(in, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::atof(line.c_str() + 6) / 1024;
    return 0;
}

struct Timing {
    double wall = 0;
    double cpu = 0;
};

template <class Work> Timing timed(Work work) {
    const double cpu = cpuSeconds();
    const auto start = Clock::now();
    work();
    return {since(start), cpuSeconds() - cpu};
}

// The session of copies of the generated photos.
fs::path prepareSession(const Settings& settings) {
    const fs::path source =
        tessary::bench::generatedPhotos(settings.folder, settings.distinct, settings.megapixels);
    const dravik::SessionManifest generated =
        dravik::SessionManifest::load(source / "session.json");

    const fs::path session = settings.folder / ("session-" + std::to_string(settings.photos));
    fs::remove_all(session);
    fs::create_directories(session);
    dravik::SessionManifest manifest{"Verification benchmark", {}};
    for (int i = 0; i < settings.photos; ++i) {
        dravik::PairInput pair = generated.pairs[static_cast<std::size_t>(i % settings.distinct)];
        dravik::RiderInput& rider = pair.riders.front();
        char name[32];
        std::snprintf(name, sizeof name, "copy-%03d", i + 1);
        fs::copy_file(source / rider.file, session / (std::string(name) + ".jpg"));
        pair.id = name;
        rider.file = std::string(name) + ".jpg";
        manifest.pairs.push_back(pair);
    }
    std::ofstream(session / "session.json") << manifest.encode();
    std::ofstream(session / "results.json") << dravik::ResultsFile{"none", "0", {}}.encode();
    return session;
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
        else if (option == "--distinct")
            settings.distinct = std::atoi(value);
        else if (option == "--megapixels")
            settings.megapixels = std::atof(value);
        else if (option == "--runs")
            settings.runs = std::atoi(value);
        else if (option == "--folder")
            settings.folder = value;
        else
            throw std::runtime_error("unknown option " + option);
    }
    if (settings.photos < 1 || settings.distinct < 1 || settings.megapixels <= 0 ||
        settings.runs < 1)
        throw std::runtime_error("photos, distinct, megapixels and runs must be positive");
    if (settings.folder.empty())
        settings.folder = fs::temp_directory_path() / "tessary-photo-verify";
    return settings;
}

int run(const Settings& settings) {
    const fs::path session = prepareSession(settings);
    const fs::path manifest = session / "session.json";
    const dravik::ReviewDocument document =
        dravik::ReviewStore::make(manifest, session / "results.json");
    std::vector<fs::path> files;
    std::uintmax_t bytes = 0;
    for (const dravik::ReviewFrame& frame : document.frames()) {
        files.push_back(dravik::ReviewStore::assetURL(frame.file, manifest));
        bytes += fs::file_size(files.back());
    }
    const dravik::ImageSize size = document.frames().front().imageSize;
    std::printf("%zu photos of %d × %d (%d distinct), %.0f MB of JPEG; %u hardware threads\n",
                files.size(), size.width, size.height, settings.distinct, bytes / 1e6,
                std::thread::hardware_concurrency());

    tessary::bench::hashOnOneCore(files); // unmeasured: both find every file in the page cache
    std::vector<double> floors, verifies, ratios, cpuRatios;
    double verifyPeak = 0;
    std::printf("load average %s at the start\n\n"
                "        floor (1 core)        verify (all cores)\n"
                "run     wall      CPU         wall      CPU      wall ratio  CPU ratio\n",
                loadAverage().c_str());
    for (int run = 1; run <= settings.runs; ++run) {
        Timing floor, verify;
        // Alternated, so that neither always runs on a machine just warmed by the other.
        for (int turn = 0; turn < 2; ++turn) {
            if ((turn == 0) == (run % 2 == 1)) {
                floor = timed([&] { tessary::bench::hashOnOneCore(files); });
            } else {
                peakMiB(true);
                verify = timed([&] {
                    if (dravik::verifyFramePhotos(document, manifest).size() != files.size())
                        throw std::runtime_error("verification lost photos");
                });
                verifyPeak = std::max(verifyPeak, peakMiB());
            }
        }
        floors.push_back(floor.wall);
        verifies.push_back(verify.wall);
        ratios.push_back(verify.wall / floor.wall);
        cpuRatios.push_back(verify.cpu / floor.cpu);
        std::printf("%3d  %6.3f s  %6.3f s    %6.3f s  %6.3f s    %6.3f     %6.3f\n", run,
                    floor.wall, floor.cpu, verify.wall, verify.cpu, ratios.back(),
                    cpuRatios.back());
    }
    std::printf("median of %d: verify %.3f s (%.1f ms a photo), floor %.3f s, wall ratio %.3f, "
                "CPU ratio %.3f; peak RSS while verifying %.1f MiB; load average %s at the end\n",
                settings.runs, median(verifies), 1000 * median(verifies) / double(files.size()),
                median(floors), median(ratios), median(cpuRatios), verifyPeak,
                loadAverage().c_str());

    // One frame's panel at each scale, as a photo cache would ask for it.
    const auto photos = dravik::verifyFramePhotos(document, manifest);
    const dravik::ReviewFrame& frame = document.frames().front();
    std::printf("\npanel %g × %g of the first photo, decoded (median of 5 each; wall, CPU):\n",
                frame.panel.width, frame.panel.height);
    for (dravik::PhotoScale scale : {dravik::PhotoScale::eighth, dravik::PhotoScale::quarter,
                                     dravik::PhotoScale::half, dravik::PhotoScale::full}) {
        std::vector<double> walls, cpus;
        dravik::ImageSize decoded;
        for (int i = 0; i < 5; ++i) {
            const Timing timing = timed([&] {
                const dravik::ScaledPanel panel = dravik::decodeFramePhoto(frame, photos[0], scale);
                decoded = {panel.image.width, panel.image.height};
            });
            walls.push_back(timing.wall);
            cpus.push_back(timing.cpu);
        }
        std::printf("  1/%d: %5d × %-5d %7.1f ms  %7.1f ms\n", static_cast<int>(scale),
                    decoded.width, decoded.height, 1000 * median(walls), 1000 * median(cpus));
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(parse(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "photo_verify: %s\n", error.what());
        return 1;
    }
}
