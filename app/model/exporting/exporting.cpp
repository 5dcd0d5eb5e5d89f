// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "reviewer_model.h"

#include <cctype>

namespace tessary {

namespace fs = std::filesystem;

namespace {

// What the reviewer wrote, with the extension the format has when the name has none.
fs::path withExtension(fs::path chosen, const char* extension) {
    if (!chosen.has_extension())
        chosen += extension;
    return chosen;
}

// A file name made of an id from the session, which may hold anything.
std::string fileNamePart(const std::string& id) {
    std::string part;
    for (const char c : id)
        part += std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_' ? c : '-';
    return part;
}

// "1 page", "2 pages"
std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string quoted(const fs::path& file) {
    return "\u201c" + file.filename().string() + "\u201d";
}

constexpr const char* notSaved = "The review on screen is not saved, so nothing was exported. "
                                 "Save the review, then export again.";

} // namespace

void ReviewerModel::exportCocoKeypoints(const dravik::CocoExportOptions& options) {
    SignalHold hold(*this);
    const dravik::ReviewDocument* current = document();
    if (!current || !session_.manifestURL || !session_.resultsURL)
        return;
    // The file matches a saved revision, as tessary-export's would.
    if (isUnsaved()) {
        setError(notSaved);
        return;
    }
    const fs::path& manifest = *session_.manifestURL;
    const auto chosen =
        chooser_->chooseSaveFile("Export Reviewed Joints (COCO)",
                                 manifest.parent_path() / "reviewed-joints.json", "JSON (*.json)");
    if (!chosen)
        return;
    const fs::path output = withExtension(*chosen, ".json");
    try {
        const dravik::CocoExport written =
            dravik::CocoExport::write(*current, manifest, *session_.resultsURL, output, options);
        setMessage("Reviewed joints exported to " + quoted(output) + " \u00b7 " +
                   counted(written.keypoints, "keypoint") + " on " +
                   counted(written.annotations, "reviewed photo"));
    } catch (const std::exception& failure) {
        setError(failure.what());
    }
}

void ReviewerModel::exportCoachingReport(const CoachingReportWriter& write) {
    SignalHold hold(*this);
    const auto current = pair();
    if (!document() || !session_.manifestURL || !session_.resultsURL || !current)
        return;
    if (isUnsaved()) {
        setError(notSaved);
        return;
    }
    const ReportSubject subject = view_.compare && current->hasReference()
                                      ? ReportSubject{current->id, std::nullopt}
                                      : ReportSubject{current->id, view_.activeFrameID};
    const fs::path& manifest = *session_.manifestURL;
    const std::string name =
        "coaching-report-" + fileNamePart(subject.frameID.value_or(subject.pairID)) + ".pdf";
    const auto chosen = chooser_->chooseSaveFile("Export Coaching Report",
                                                 manifest.parent_path() / name, "PDF (*.pdf)");
    if (!chosen)
        return;
    const fs::path output = withExtension(*chosen, ".pdf");
    try {
        const ReportSession session{manifest,
                                    *session_.resultsURL,
                                    session_.title,
                                    snapshot_->documentPointer,
                                    session_.companions,
                                    session_.leanProposals};
        const std::size_t pages = write(session, {subject}, output);
        setMessage("Coaching report exported to " + quoted(output) + " \u00b7 " +
                   counted(pages, "page"));
    } catch (const std::exception& failure) {
        setError(failure.what());
    }
}

} // namespace tessary
