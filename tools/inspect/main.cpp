// SPDX-License-Identifier: Apache-2.0
// tessary-inspect: opens a session through the core library and prints what a reviewer would see.
#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/joints.h"
#include "dravik/store.h"
#include "tessary/version.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <getopt.h>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace dravik;

namespace {

constexpr const char* help = R"(Usage: tessary-inspect SESSION RESULTS
Opens a session (its manifest SESSION and the detector's RESULTS) as Tessary would, with the
saved review beside it if there is one, and prints its frames, joints and pairs.

Options:
  -h, --help     show this help and exit
      --version  show the version and exit

Exit status: 0 printed; 1 the session could not be opened, with the reason on stderr; 64 wrong
arguments.
)";

int detectedJoints(const ReviewFrame& frame, const std::string& kind) {
    int count = 0;
    for (const auto& joint : InspectionRenderer::jointNames())
        count += frame.seedPoint(joint, kind).has_value();
    return count;
}

std::string rect(const PixelRect& r) {
    char text[96];
    std::snprintf(text, sizeof text, "%.0f,%.0f %.0f×%.0f", r.x, r.y, r.width, r.height);
    return text;
}

void print(const ReviewDocument& document, const fs::path& review, bool reopened,
           const std::vector<Image>& photos) {
    std::cout << "Review: " << review.filename().string() << " · revision " << document.revision()
              << (reopened ? " · saved review" : " · nothing reviewed yet") << "\n";
    std::cout << "Frames: " << document.frames().size() << "\n";
    std::map<std::string, std::vector<const ReviewFrame*>> pairs;
    std::vector<std::string> pairOrder;
    for (std::size_t i = 0; i < document.frames().size(); ++i) {
        const ReviewFrame& frame = document.frames()[i];
        if (!pairs.contains(frame.pairID))
            pairOrder.push_back(frame.pairID);
        pairs[frame.pairID].push_back(&frame);
        std::cout << "  " << frame.id << " · " << frame.riderDisplayName << " (" << frame.role
                  << ") · " << frame.file << " · " << frame.imageSize.width << "×"
                  << frame.imageSize.height << " · panel " << rect(frame.panel) << " · decoded "
                  << photos[i].width << "×" << photos[i].height << "\n"
                  << "    detected 3D " << detectedJoints(frame, "3D") << " / 19 · 2D "
                  << detectedJoints(frame, "2D") << " / 19 · " << frame.edits.size()
                  << " / 19 reviewed · " << frame.retries.size() << " retries\n";
    }
    std::cout << "Pairs: " << pairOrder.size() << "\n";
    for (const auto& id : pairOrder) {
        std::cout << "  " << id << ":";
        for (const ReviewFrame* frame : pairs[id])
            std::cout << " " << (frame->role == "subject" ? "Rider " : "Reference rider ")
                      << frame->riderDisplayName;
        std::cout << "\n";
    }
}

} // namespace

int main(int argc, char** argv) {
    static const option options[] = {{"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, 'V'},
                                     {nullptr, 0, nullptr, 0}};
    for (int option; (option = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
        if (option == 'h') {
            std::cout << help;
            return 0;
        }
        if (option == 'V') {
            std::cout << "tessary-inspect " << tessary::version << "\n";
            return 0;
        }
        std::cerr << "See \u201ctessary-inspect --help\u201d.\n";
        return 64;
    }
    if (argc - optind != 2) {
        std::cerr << "tessary-inspect needs a session manifest and its results; see "
                     "\u201ctessary-inspect --help\u201d.\n";
        return 64;
    }
    try {
        const fs::path manifest = argv[optind];
        const ReviewDocument raw = ReviewStore::make(manifest, argv[optind + 1]);
        const fs::path review = manifest.parent_path() / ReviewStore::reviewFileName(raw);
        ReviewDocument document = raw;
        const bool reopened = fs::exists(review);
        if (reopened) {
            document = ReviewStore::load(review);
            ReviewStore::validate(document, raw);
        }
        const std::vector<Image> photos = loadFramePhotos(document, manifest);
        print(document, review, reopened, photos);
        return 0;
    } catch (const DravikError& error) {
        std::cerr << error.what() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "The session could not be opened: " << error.what() << "\n";
        return 1;
    }
}
