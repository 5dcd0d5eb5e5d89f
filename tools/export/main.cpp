// SPDX-License-Identifier: Apache-2.0
// tessary-export: writes what a session's review holds in a format other programs read.
#include "command_line.h"
#include "dravik/coco_export.h"
#include "dravik/error.h"
#include "dravik/session_review.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>

using namespace dravik;

namespace {

constexpr const char* usage =
    "Usage: tessary-export coco MANIFEST RESULTS -o FILE.json [--uncertain-as-occluded]\n"
    "                           [--include-unreviewed]\n"
    "       tessary-export --help | --version\n";

constexpr const char* help =
    "\n"
    "Writes the reviewed joints of a session as COCO person keypoints: one annotation per rider\n"
    "photo with at least one reviewed joint, in the photo's pixels after EXIF orientation. The\n"
    "session's saved review beside MANIFEST is used when there is one.\n"
    "\n"
    "  -o, --output FILE.json     the file to write (never a file of the session)\n"
    "      --uncertain-as-occluded\n"
    "                             uncertain joints as v = 1 (labelled, not visible) instead of 0\n"
    "      --include-unreviewed   the detector's points too, as the category\n"
    "                             \"person (unreviewed detection)\"\n"
    "  -h, --help                 this text\n"
    "  -V, --version              the version\n";

} // namespace

int main(int argc, char** argv) {
    enum { uncertainOption = 256, unreviewedOption };
    CocoExportOptions exportOptions;
    tessary::CommandLine line("tessary-export", usage, help);
    if (auto status = line.parse(argc, argv,
                                 {{"uncertain-as-occluded", no_argument, nullptr, uncertainOption},
                                  {"include-unreviewed", no_argument, nullptr, unreviewedOption}},
                                 [&](int option, const char*) {
                                     (option == uncertainOption ? exportOptions.uncertainAsOccluded
                                                                : exportOptions.includeUnreviewed) =
                                         true;
                                 }))
        return *status;
    const std::string& output = line.output();
    const int operands = argc - optind;
    if (operands == 0 || std::string_view(argv[optind]) != "coco")
        return line.usageError(operands == 0 ? "Say what to export: coco."
                                             : "“" + std::string(argv[optind]) +
                                                   "” is not a format this program writes; it "
                                                   "writes coco.");
    if (operands != 3)
        return line.usageError("coco needs the session's MANIFEST and RESULTS.");
    if (output.empty())
        return line.usageError("Name the file to write with -o FILE.json.");

    try {
        const std::string manifest = argv[optind + 1];
        const std::string results = argv[optind + 2];
        const SessionReview review = SessionReview::open(manifest, results);
        const CocoExport written =
            CocoExport::write(review.document, manifest, results, output, exportOptions);
        std::cout << "Wrote “" << output << "”: " << written.keypoints << " keypoints on "
                  << written.annotations << " reviewed photos, " << written.images
                  << " photos in all.\n";
        return 0;
    } catch (const DravikError& error) {
        std::cerr << error.what() << "\n";
        return 1;
    } catch (const std::exception& error) {
        std::cerr << "The export could not be written: " << error.what() << "\n";
        return 1;
    }
}
