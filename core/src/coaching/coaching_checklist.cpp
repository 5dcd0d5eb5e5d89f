// SPDX-License-Identifier: Apache-2.0
#include "coaching/checklist_codec.h"
#include "coaching/coaching_subjects.h"
#include "dravik/coaching.h"
#include "dravik/review.h"

#include "json/document_io.h"

namespace dravik::CoachingChecklist {

std::map<std::string, CoachingChecklistReview> decode(std::string_view text,
                                                      const std::string& fileLabel,
                                                      const std::vector<ReviewFrame>& frames) {
    return json::decodeDocument(text, fileLabel, coaching::checklistKind,
                                [&](const json::Node& root) {
                                    return coaching::matchChecklist(
                                        coaching::checklistFromJson(root), frames, root.source());
                                });
}

std::map<std::string, CoachingChecklistReview> load(const std::filesystem::path& file,
                                                    const std::vector<ReviewFrame>& frames) {
    json::Source source{json::fileLabel(file), std::string(coaching::checklistKind)};
    return decode(json::readFile(file, source), source.label, frames);
}

std::string encode(const std::vector<CoachingChecklistReview>& reviews,
                   const std::vector<ReviewFrame>& frames) {
    json::Source source{"", std::string(coaching::checklistKind), true};
    auto subjects = coaching::sessionSubjects(frames, source);
    coaching::ChecklistFile file{std::string(catalogVersion()), {}};
    for (std::size_t i = 0; i < reviews.size(); ++i) {
        const CoachingChecklistReview& review = reviews[i];
        std::string at = "reviews[" + std::to_string(i) + "]";
        if (review.catalogVersion != catalogVersion())
            json::fail(source, at + " was made with another version of the checklist catalogue");
        auto subject = subjects.find(review.subjectID);
        if (subject == subjects.end())
            json::fail(source, at + ".subjectID names no pair or lone photo of this session");
        coaching::ChecklistEntry entry{review, {}};
        for (const ReviewFrame* frame : subject->second)
            entry.photos.push_back({frame->id, frame->sourceHash});
        file.subjects.push_back(std::move(entry));
    }
    return json::encodeDocument(coaching::toJson(file), coaching::checklistKind,
                                json::Layout::pretty, [&](const json::Node& root) {
                                    return coaching::matchChecklist(
                                        coaching::checklistFromJson(root), frames, root.source());
                                });
}

} // namespace dravik::CoachingChecklist
