// SPDX-License-Identifier: Apache-2.0
// Every reader and writer of a session folder, each facing what a folder from someone else may
// hold in the place of its file. Each case runs in a child process with a deadline, so that one
// that hangs fails here instead of stalling the whole run.

#include "dravik/atomic_file.h"
#include "dravik/coaching.h"
#include "dravik/detection.h"
#include "dravik/file_io.h"
#include "dravik/framing.h"
#include "dravik/image.h"
#include "dravik/launch_config.h"
#include "dravik/lean_analysis.h"
#include "dravik/manifest.h"
#include "dravik/store.h"
#include "test_support.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace dravik;
namespace fs = std::filesystem;

namespace {

using namespace std::chrono_literals;

enum class Shape { linkOut, hardLink, danglingLink, pipe, folder, zeroDevice, hugeFile };

const std::pair<Shape, const char*> shapes[] = {
    {Shape::linkOut, "a link to a file outside"},
    {Shape::hardLink, "a hard link of a file outside"},
    {Shape::danglingLink, "a dangling link"},
    {Shape::pipe, "a named pipe"},
    {Shape::folder, "a folder"},
    {Shape::zeroDevice, "a link to /dev/zero"},
    {Shape::hugeFile, "a sparse file of 64 GiB"},
};

// The session folder a case starts from: a manifest and results, and a review of them.
struct Session {
    fs::path folder;
    fs::path manifest;
    fs::path results;
    fs::path review;

    ReviewDocument raw() const { return ReviewStore::make(manifest, results); }
};

struct Target {
    std::string what;
    std::string name; // the entry that takes each shape, inside the session folder
    std::function<void(const Session&)> use;
    std::set<Shape> harmless = {}; // shapes this writer may take as its own file or folder
};

const std::string precious = "precious bytes that belong to someone else\n";

void plant(Shape shape, const fs::path& entry, const fs::path& outside) {
    std::error_code ignored;
    fs::remove_all(entry, ignored);
    switch (shape) {
    case Shape::linkOut:
        fs::create_symlink(outside / "precious.txt", entry);
        break;
    case Shape::hardLink:
        fs::create_hard_link(outside / "precious.txt", entry);
        break;
    case Shape::danglingLink:
        fs::create_symlink(outside / "not-yet.txt", entry);
        break;
    case Shape::pipe:
        ASSERT_EQ(::mkfifo(entry.c_str(), 0644), 0);
        break;
    case Shape::folder:
        fs::create_directory(entry);
        break;
    case Shape::zeroDevice:
        fs::create_symlink("/dev/zero", entry);
        break;
    case Shape::hugeFile:
        test::writeText(entry, "");
        fs::resize_file(entry, std::uintmax_t{64} << 30);
        break;
    }
}

struct Outcome {
    bool finished = false;
    bool refused = false;
    std::string message;
    long grownKiB = 0;
};

// Runs `body` in a child process that must be done within `deadline`; a DravikError sentence, or
// any other failure, and the child's peak memory growth come back through a pipe.
Outcome inChild(const std::function<void()>& body, std::chrono::milliseconds deadline) {
    int ends[2];
    if (::pipe(ends) != 0)
        return {};
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        rusage before{};
        ::getrusage(RUSAGE_SELF, &before);
        std::string report;
        try {
            body();
            report = "ok\n";
        } catch (const DravikError& error) {
            report = "refused\n" + error.message();
        } catch (const std::exception& error) {
            report = "other\n" + std::string(error.what());
        }
        rusage after{};
        ::getrusage(RUSAGE_SELF, &after);
        report = std::to_string(after.ru_maxrss - before.ru_maxrss) + "\n" + report;
        (void)!::write(ends[1], report.data(), report.size());
        ::_exit(0);
    }
    ::close(ends[1]);
    Outcome outcome;
    std::string report;
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd ready{ends[0], POLLIN, 0};
        if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) <= 0)
            break;
        char buffer[4096];
        const ssize_t got = ::read(ends[0], buffer, sizeof buffer);
        if (got <= 0) {
            outcome.finished = true;
            break;
        }
        report.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(ends[0]);
    if (!outcome.finished)
        ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    std::istringstream in(report);
    std::string kind;
    if (!(in >> outcome.grownKiB) || !std::getline(in.ignore(), kind)) {
        outcome.finished = false;
        return outcome;
    }
    std::getline(in, outcome.message, '\0');
    outcome.refused = kind == "refused";
    if (kind == "other")
        outcome.message = "other: " + outcome.message;
    return outcome;
}

std::vector<std::string> listing(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        names.push_back(entry.path().lexically_relative(folder).string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<Target> targets() {
    const auto frames = [](const Session& s) { return s.raw().frames(); };
    return {
        {"the manifest", "session.json",
         [](const Session& s) { SessionManifest::load(s.manifest); }},
        {"the results", "results.json", [](const Session& s) { s.raw(); }},
        {"the review, opened", "review.json",
         [](const Session& s) { ReviewStore::load(s.review); }},
        {"the review, read again before saving", "review.json",
         [](const Session& s) { ReviewStore::save(s.raw(), s.review, 0); }},
        {"the review's lock",
         ".review.json.lock",
         [](const Session& s) { ReviewStore::save(s.raw(), s.review, 0); },
         {Shape::hugeFile}},
        {"the framing", "photo-framing.json",
         [=](const Session& s) {
             PhotoFramingRegion::load(s.folder / "photo-framing.json", frames(s));
         }},
        {"the lean proposals", "lean-proposals.json",
         [](const Session& s) { loadLeanProposals(s.folder / "lean-proposals.json"); }},
        {"the photo notes", "single-photo-coaching.json",
         [=](const Session& s) {
             SinglePhotoCoaching::load(s.folder / "single-photo-coaching.json", frames(s));
         }},
        {"the checklist", "coaching-checklist.json",
         [=](const Session& s) {
             CoachingChecklist::load(s.folder / "coaching-checklist.json", frames(s));
         }},
        {"a photo", "rider.jpg", [](const Session& s) { loadFramePhotos(s.raw(), s.manifest); }},
        {"the launch presets", "launch.json",
         [](const Session& s) { loadLaunchPresets(s.folder / "launch.json"); }},
        {"the data folder setting",
         "data-directory.txt",
         [](const Session& s) { readDataDirectory(s.folder / "data-directory.txt"); },
         {Shape::linkOut, Shape::hardLink}}, // reading the text of another file harms nobody
        {"a retry request", "request.json",
         [](const Session& s) { RetryRequest::load(s.folder / "request.json"); }},
        {"a retry's answer", "result.json",
         [](const Session& s) { DetectionRetry::load(s.folder / "result.json"); }},
        {"the results, written by the batch program",
         "results.json",
         [](const Session& s) { writeFileAtomically(s.results, "{}"); },
         {Shape::hugeFile, Shape::hardLink}}, // replaced by a new file: the other name keeps its
        {"an analysis log",
         "results.json.log",
         [](const Session& s) { openOwnFile(s.folder / "results.json.log", OwnFile::empty); },
         {Shape::hugeFile}},
        {"the retry folders",
         "detection-retries",
         [](const Session& s) {
             Folder::open(s.folder).subfolder("detection-retries").newSubfolder("A1");
         },
         {Shape::folder}},
    };
}

TEST(HostileFolder, NoEntryHangsEatsMemoryOrLetsAnythingOutsideTheSessionBeWritten) {
    const test::TempDir root;
    for (const Target& target : targets()) {
        for (const auto& [shape, shapeName] : shapes) {
            SCOPED_TRACE(target.what + " as " + shapeName);
            const fs::path base = root / "case";
            fs::remove_all(base);
            const fs::path outside = base / "outside";
            test::writeText(outside / "precious.txt", precious);
            SessionManifest manifest = test::sampleManifest();
            manifest.pairs[0].riders[0].file = "rider.jpg";
            const test::SessionFiles files = test::writeSession(base / "session", manifest);
            const Session session{base / "session", files.manifest, files.results,
                                  base / "session" / "review.json"};
            plant(shape, session.folder / target.name, outside);

            const Outcome outcome = inChild([&] { target.use(session); }, 2s);
            EXPECT_TRUE(outcome.finished) << "no answer within 2 s";
            if (!target.harmless.contains(shape)) {
                EXPECT_TRUE(outcome.refused) << outcome.message;
                EXPECT_FALSE(outcome.message.empty());
            }
            EXPECT_LT(outcome.grownKiB, 32 * 1024) << "KiB of peak memory added";
            EXPECT_EQ(test::readText(outside / "precious.txt"), precious);
            EXPECT_EQ(listing(outside), std::vector<std::string>{"precious.txt"});
            EXPECT_EQ(test::entries(base), (std::vector<std::string>{"outside", "session"}));
        }
    }
}

} // namespace
