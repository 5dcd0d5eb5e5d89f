// SPDX-License-Identifier: Apache-2.0
// Committed joint edits through the review model, each saved durably, on a 50-photo session.
//
//   edit_save [folder]   (default: a fresh folder under the system's temporary directory)

#include "dravik/joints.h"
#include "dravik/store.h"
#include "editing/snapshot_building.h"
#include "reviewer_model.h"
#include "samplegen.h"

#include <QCoreApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

double percentile(std::vector<double> values, double fraction) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(fraction * static_cast<double>(values.size() - 1));
    return values[index];
}

void report(const char* name, const std::vector<double>& times) {
    double total = 0;
    for (double t : times)
        total += t;
    std::printf("%-22s n=%-5zu median %7.3f ms   p99 %7.3f ms   max %7.3f ms   total %8.1f ms\n",
                name, times.size(), percentile(times, 0.5), percentile(times, 0.99),
                *std::max_element(times.begin(), times.end()), total);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const fs::path folder =
        argc > 1 ? fs::path(argv[1])
                 : fs::temp_directory_path() / ("tessary-edit-save-" + std::to_string(::getpid()));
    fs::remove_all(folder);
    tessary::samplegen::Options options;
    options.photos = 50;
    options.megapixels = 0.3;
    tessary::samplegen::writeSession(folder, options);

    tessary::ReviewerModel model(tessary::Bundle(folder / "bundle"),
                                 std::make_shared<tessary::CancellingFileChooser>());
    auto start = Clock::now();
    model.load(folder / "session.json", folder / "results.json");
    const double openTime = millisecondsSince(start);
    if (model.error()) {
        std::fprintf(stderr, "%s\n", model.error()->c_str());
        return 1;
    }

    // Set, nudge, undo in turn, on one joint after another; every 25 edits the next photo.
    const auto& joints = dravik::InspectionRenderer::jointNames();
    std::mt19937 random(7);
    std::uniform_real_distribution<double> offset(-20, 20);
    std::vector<double> edits, sets, nudges, undos, navigation;
    const std::size_t frames = model.document()->frames().size();
    for (int i = 0; i < 1000; ++i) {
        if (i % 25 == 0 && i > 0) {
            start = Clock::now();
            model.selectFrame(static_cast<std::int64_t>((i / 25) % frames));
            navigation.push_back(millisecondsSince(start));
        }
        const std::string& joint = joints[static_cast<std::size_t>(i / 3) % joints.size()];
        model.setSelected(joint);
        const auto revision = model.document()->revision();
        start = Clock::now();
        switch (i % 3) {
        case 0: {
            const auto seed = model.frame()
                                  ->displayPoint(joint, "3D")
                                  .value_or(dravik::Point2{model.frame()->panel.x + 50,
                                                           model.frame()->panel.y + 50});
            model.edit(dravik::Point2{seed.x + offset(random), seed.y + offset(random)},
                       dravik::JointReviewState::corrected);
            sets.push_back(millisecondsSince(start));
            break;
        }
        case 1:
            model.nudge(1, -1, *model.activeFrameID());
            nudges.push_back(millisecondsSince(start));
            break;
        default:
            model.undo();
            undos.push_back(millisecondsSince(start));
            break;
        }
        edits.push_back(millisecondsSince(start));
        if (model.document()->revision() != revision + 1 || model.isUnsaved() || model.error()) {
            std::fprintf(stderr, "edit %d was not committed and saved\n", i);
            return 1;
        }
    }

    // What the model itself does for an edit, without the save: copy the shared document, change
    // the copy, resolve the pairs and analyse the current one.
    std::vector<double> modelWork;
    for (int i = 0; i < 1000; ++i) {
        const std::size_t index = static_cast<std::size_t>(i) % frames;
        const auto pairID = model.document()->frames()[index].pairID;
        start = Clock::now();
        auto copy = std::make_shared<dravik::ReviewDocument>(*model.document());
        copy->setJoint(index, "nose", dravik::Point2{10.0 + i, 10},
                       dravik::JointReviewState::corrected);
        const auto snapshot = tessary::buildSnapshot(copy, pairID, model.leanProposals());
        modelWork.push_back(millisecondsSince(start));
        // Every photo of this session is a rider alone: a pair of its own, with no report.
        if (snapshot.report || snapshot.pairs.size() != frames) {
            std::fprintf(stderr, "the snapshot of photo %zu is not the expected one\n", index);
            return 1;
        }
    }

    // The durable write alone, for comparison.
    std::vector<double> saves;
    dravik::ReviewDocument document = *model.document();
    const fs::path review = folder / dravik::ReviewStore::reviewFileName(document);
    for (int i = 0; i < 200; ++i) {
        const auto previous = document.revision();
        document.setJoint(0, "nose", dravik::Point2{10.0 + i, 10},
                          dravik::JointReviewState::corrected);
        start = Clock::now();
        dravik::ReviewStore::save(document, review, previous);
        saves.push_back(millisecondsSince(start));
    }
    std::vector<double> encodes;
    for (int i = 0; i < 200; ++i) {
        start = Clock::now();
        const std::string text = dravik::ReviewStore::encode(document);
        encodes.push_back(millisecondsSince(start));
        if (text.empty()) {
            std::fprintf(stderr, "encoding the review gave nothing\n");
            return 1;
        }
    }

    // Saving reads the file on disk back to learn its revision.
    std::vector<double> decodes;
    const std::string text = dravik::ReviewStore::encode(document);
    for (int i = 0; i < 200; ++i) {
        start = Clock::now();
        const auto decoded = dravik::ReviewStore::decode(text, review.filename().string());
        decodes.push_back(millisecondsSince(start));
        if (decoded.revision() != document.revision()) {
            std::fprintf(stderr, "the review read back has another revision\n");
            return 1;
        }
    }

    std::printf("session: %zu photos of %.1f MP in %s\n", frames, options.megapixels,
                folder.c_str());
    std::printf("review file: %ju bytes\n", static_cast<std::uintmax_t>(fs::file_size(review)));
    std::printf("open (blocks the GUI thread): %.1f ms\n", openTime);
    report("committed edit", edits);
    report("  set", sets);
    report("  nudge", nudges);
    report("  undo", undos);
    report("navigation", navigation);
    report("model work, no save", modelWork);
    report("ReviewStore::save", saves);
    report("ReviewStore::encode", encodes);
    report("ReviewStore::decode", decodes);
    double blocked = 0;
    for (double t : edits)
        blocked += t;
    std::printf("GUI thread blocked by the 1000 edits: %.1f ms in all, %.3f ms at most at once "
                "(every edit runs synchronously on it)\n",
                blocked, *std::max_element(edits.begin(), edits.end()));
    fs::remove_all(folder);
    return 0;
}
