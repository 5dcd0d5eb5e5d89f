// SPDX-License-Identifier: Apache-2.0
// Times dravik-batch on generated sessions of 1 MP and 24 MP photos, and on a 24 MP session made
// from the shared photo of riders among a crowd: the warm cost of one more photo in a folder
// analysis (one worker for the whole run) and a one-shot redetect, start-up and model loading
// included. Each run is a fresh process, as the app starts it; the worker's log says how many
// model passes each run cost.
#include "dravik/detection.h"
#include "dravik/discovery.h"
#include "dravik/image.h"
#include "dravik/manifest.h"
#include "jpeg_writer.h"
#include "samplegen.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int warmPhotos = 5;

struct Timing {
    double seconds = 0;
    double cpuSeconds = 0; // the program and its worker, user and system: what an idle machine
                           // would take, since the two never run at the same time
    int passes = 0;        // model passes, from the worker's last line in the log
};

// "The models ran 9 passes: ..." at the end of each worker process's diagnostics.
int passesIn(const fs::path& log) {
    std::ifstream in(log);
    std::string line;
    int passes = 0;
    while (std::getline(in, line))
        if (line.starts_with("The models ran "))
            passes += std::atoi(line.c_str() + std::strlen("The models ran "));
    return passes;
}

std::string loadAverage() {
    std::ifstream in("/proc/loadavg");
    std::string one;
    in >> one;
    return one;
}

// What the batch program took; its output goes to `log`.
Timing timeBatch(std::vector<std::string> arguments, const fs::path& log) {
    std::vector<char*> argv;
    for (auto& a : arguments)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    auto start = Clock::now();
    pid_t pid = 0;
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        throw std::runtime_error("cannot start " + arguments[0]);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    rusage usage{};
    wait4(pid, &status, 0, &usage); // counts the worker too, which the program reaps
    double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    auto toSeconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    if (!WIFEXITED(status) || (WEXITSTATUS(status) != 0 && WEXITSTATUS(status) != 2))
        throw std::runtime_error(arguments[1] + " failed; see " + log.string());
    return {seconds, toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime), passesIn(log)};
}

void keepFirstPhotos(const fs::path& manifestFile, int photos) {
    auto manifest = dravik::SessionManifest::load(manifestFile);
    manifest.pairs.resize(std::size_t(photos));
    std::ofstream(manifestFile) << manifest.encode();
}

Timing redetect(const fs::path& program, const fs::path& folder, const std::string& name,
                const dravik::RiderInput& rider, const dravik::PixelRect& crop) {
    dravik::RetryRequest request{(folder / rider.file).string(), rider.sourceHash, crop};
    std::ofstream(folder / (name + ".json")) << request.encode();
    return timeBatch({program, "redetect", folder / (name + ".json"), folder / (name + ".out")},
                     folder / (name + ".log"));
}

// Folder analysis of `folder`'s session: one photo, then all, and what one more photo costs.
std::pair<Timing, Timing> analyse(const fs::path& program, const fs::path& folder) {
    fs::path manifest = folder / "session.json";
    fs::path one = folder / "one.json";
    fs::copy_file(manifest, one, fs::copy_options::overwrite_existing);
    keepFirstPhotos(one, 1);
    Timing all =
        timeBatch({program, "feasibility", manifest, folder / "all.out"}, folder / "all.log");
    Timing single =
        timeBatch({program, "feasibility", one, folder / "one.out"}, folder / "one.log");
    Timing warm{(all.seconds - single.seconds) / (warmPhotos - 1),
                (all.cpuSeconds - single.cpuSeconds) / (warmPhotos - 1),
                (all.passes - single.passes) / (warmPhotos - 1)};
    return {warm, single};
}

void print(const char* what, const Timing& warm, const Timing& single, const Timing& retry,
           const char* retryWhat) {
    std::printf("%-16s warm feasibility %.2f s/photo (cpu %.2f, %d passes)  one-photo "
                "feasibility %.2f s (cpu %.2f)  one-shot redetect %s %.2f s (cpu %.2f, %d passes)"
                "  load %s\n",
                what, warm.seconds, warm.cpuSeconds, warm.passes, single.seconds, single.cpuSeconds,
                retryWhat, retry.seconds, retry.cpuSeconds, retry.passes, loadAverage().c_str());
    std::fflush(stdout);
}

void measure(const fs::path& program, const fs::path& root, double megapixels) {
    fs::path folder = root / (std::to_string(int(megapixels)) + "mp");
    tessary::samplegen::writeSession(folder, {warmPhotos, megapixels, 7, false, 90});
    auto [warm, single] = analyse(program, folder);
    auto rider = dravik::SessionManifest::load(folder / "session.json").pairs.at(0).riders.at(0);
    Timing retry = redetect(program, folder, "request", rider, rider.crop);
    const std::string what = std::to_string(int(megapixels)) + " MP generated";
    print(what.c_str(), warm, single, retry, "of the crop");
}

// The shared photo of cyclists among a crowd, enlarged to 24 MP (mirrored every other time), as
// discovery would write it: the whole pipeline with real people and two-wheelers.
void measureRealPhoto(const fs::path& program, const fs::path& root, const fs::path& photo) {
    const dravik::ImageInput input = dravik::ImageInput::load(photo);
    const dravik::Image source = input.decoded();
    const int width = 6000;
    const int height = source.height * width / source.width;
    fs::path folder = root / "crowd";
    fs::create_directories(folder);
    dravik::SessionManifest manifest{"Crowd", {}};
    for (int i = 0; i < warmPhotos; ++i) {
        std::vector<std::uint8_t> rgb(std::size_t(width) * height * 3);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                int sx = x * source.width / width;
                if (i % 2)
                    sx = source.width - 1 - sx;
                const std::uint8_t* p = source.data() +
                                        std::size_t(y * source.height / height) * source.stride +
                                        std::size_t(sx) * 3;
                std::copy(p, p + 3, rgb.data() + (std::size_t(y) * width + x) * 3);
            }
        const std::string file = "crowd-" + std::to_string(i) + ".jpg";
        auto bytes = tessary::samplegen::encodeJpeg(rgb, width, height, 90);
        std::ofstream(folder / file, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        const dravik::PixelRect whole{0, 0, double(width), double(height)};
        manifest.pairs.push_back({file,
                                  file,
                                  {{"rider",
                                    "subject",
                                    std::string(dravik::SessionDiscovery::unreviewedRiderName()),
                                    file,
                                    dravik::ImageInput::load(folder / file).sourceHash(),
                                    {width, height},
                                    whole,
                                    whole}}});
    }
    std::ofstream(folder / "session.json") << manifest.encode();
    auto [warm, single] = analyse(program, folder);
    // The retry of the rider the analysis chose, on the box a reviewer would pick, grown a little.
    const auto results = dravik::ResultsFile::load(folder / "one.out");
    const dravik::DravikResult& found = results.riders.at(0).results.at(0);
    dravik::PixelRect crop = manifest.pairs[0].riders[0].panel;
    if (found.rider) {
        const dravik::PixelRect box = found.candidates.at(*found.rider).box;
        crop = {box.x - box.width / 4, box.y - box.height / 4, box.width * 1.5, box.height * 1.5};
    }
    Timing retry = redetect(program, folder, "rider", manifest.pairs[0].riders[0], crop);
    print("24 MP crowd", warm, single, retry, "of the rider");
    Timing panel = redetect(program, folder, "panel", manifest.pairs[0].riders[0],
                            manifest.pairs[0].riders[0].panel);
    std::printf("%-16s one-shot redetect of the full panel %.2f s (cpu %.2f, %d passes)  load %s\n",
                "24 MP crowd", panel.seconds, panel.cpuSeconds, panel.passes,
                loadAverage().c_str());
}

} // namespace

int main(int argc, char** argv) {
    fs::path program = argc > 1 ? fs::path(argv[1]) : fs::path(DRAVIK_BATCH_PROGRAM);
    fs::path root = fs::temp_directory_path() / ("detect-bench-" + std::to_string(getpid()));
    const fs::path crowd = fs::path(TESSARY_PHOTOS_DIR) / "33823288584_1d21cf0a26_k.jpg";
    try {
        for (double megapixels : {1.0, 24.0})
            measure(program, root, megapixels);
        if (fs::is_regular_file(crowd))
            measureRealPhoto(program, root, crowd);
        else
            std::printf("no shared photo at %s: the crowd session is left out\n", crowd.c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        fs::remove_all(root);
        return 1;
    }
    fs::remove_all(root);
    return 0;
}
