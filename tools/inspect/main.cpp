// tessary-inspect: opens a session through the core library and prints what a reviewer would see.
#include "dravik/error.h"
#include "dravik/image.h"
#include "dravik/joints.h"
#include "dravik/store.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace dravik;

namespace {

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
    if (argc != 3) {
        std::cerr << "usage: tessary-inspect <session.json> <results.json>\n";
        return 64;
    }
    try {
        const fs::path manifest = argv[1];
        const ReviewDocument raw = ReviewStore::make(manifest, argv[2]);
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
