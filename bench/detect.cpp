// Times dravik-batch on generated sessions of 1 MP and 24 MP photos: the warm cost of one more
// photo in a folder analysis (one worker for the whole run) and a one-shot redetect, start-up and
// model loading included. Each run is a fresh process, as the app starts it.
#include "dravik/detection.h"
#include "dravik/manifest.h"
#include "samplegen.h"

#include <chrono>
#include <cstdio>
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
};

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
    return {seconds, toSeconds(usage.ru_utime) + toSeconds(usage.ru_stime)};
}

void keepFirstPhotos(const fs::path& manifestFile, int photos) {
    auto manifest = dravik::SessionManifest::load(manifestFile);
    manifest.pairs.resize(std::size_t(photos));
    std::ofstream(manifestFile) << manifest.encode();
}

void measure(const fs::path& program, const fs::path& root, double megapixels) {
    fs::path folder = root / (std::to_string(int(megapixels)) + "mp");
    tessary::samplegen::writeSession(folder, {warmPhotos, megapixels, 7, false, 90});
    fs::path manifest = folder / "session.json";
    fs::path one = folder / "one.json";
    fs::copy_file(manifest, one, fs::copy_options::overwrite_existing);
    keepFirstPhotos(one, 1);

    Timing all =
        timeBatch({program, "feasibility", manifest, folder / "all.out"}, folder / "all.log");
    Timing single =
        timeBatch({program, "feasibility", one, folder / "one.out"}, folder / "one.log");
    Timing warm{(all.seconds - single.seconds) / (warmPhotos - 1),
                (all.cpuSeconds - single.cpuSeconds) / (warmPhotos - 1)};

    auto rider = dravik::SessionManifest::load(manifest).pairs.at(0).riders.at(0);
    dravik::RetryRequest request{(folder / rider.file).string(), rider.sourceHash, rider.crop};
    std::ofstream(folder / "request.json") << request.encode();
    Timing redetect =
        timeBatch({program, "redetect", folder / "request.json", folder / "result.json"},
                  folder / "redetect.log");
    std::printf("%5.0f MP  warm feasibility %.2f s/photo (cpu %.2f)  one-photo feasibility %.2f s "
                "(cpu %.2f)  one-shot redetect %.2f s (cpu %.2f)\n",
                megapixels, warm.seconds, warm.cpuSeconds, single.seconds, single.cpuSeconds,
                redetect.seconds, redetect.cpuSeconds);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    fs::path program = argc > 1 ? fs::path(argv[1]) : fs::path(DRAVIK_BATCH_PROGRAM);
    fs::path root = fs::temp_directory_path() / ("detect-bench-" + std::to_string(getpid()));
    try {
        for (double megapixels : {1.0, 24.0})
            measure(program, root, megapixels);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        fs::remove_all(root);
        return 1;
    }
    fs::remove_all(root);
    return 0;
}
