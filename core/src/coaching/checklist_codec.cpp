// SPDX-License-Identifier: Apache-2.0
#include "coaching/checklist_codec.h"

#include "coaching/coaching_subjects.h"
#include "dravik/review.h"

#include "json/geometry_codec.h"
#include "json/json_writer.h"
#include <set>

namespace dravik::coaching {

namespace {

bool isTopic(const std::string& id) {
    for (const CoachingTopic& topic : CoachingChecklist::catalog())
        if (topic.id == id)
            return true;
    return false;
}

std::string currentCatalog() {
    return json::quoted(CoachingChecklist::catalogVersion());
}

void readCatalogVersion(const json::Node& root, ChecklistFile& file) {
    json::Node node = root["catalogVersion"];
    file.catalogVersion = node.nonEmptyString();
    if (file.catalogVersion == CoachingChecklist::catalogVersion())
        return;
    const json::Source& source = root.source();
    if (source.writing)
        json::fail(source, "its findings must use checklist catalogue " + currentCatalog());
    throw DravikError(json::quoted(source.label) +
                      " was saved for another version of the checklist catalogue than " +
                      currentCatalog() + ".");
}

PhotoRef readPhoto(const json::Node& node) {
    return {node["frameID"].nonEmptyString(), json::readContentHash(node["sourceHash"])};
}

ChecklistEntry readEntry(const json::Node& node, const std::string& version) {
    ChecklistEntry entry;
    entry.review.subjectID = node["subjectID"].nonEmptyString();
    entry.review.catalogVersion = version;
    json::Node direction = node["cornerDirection"];
    auto parsed = cornerDirection(direction.string());
    if (!parsed)
        direction.fail("must be \"Unknown\", \"Left\" or \"Right\"");
    entry.review.cornerDirection = *parsed;

    json::Node frames = node["frames"];
    std::set<std::string> frameIDs;
    for (const json::Node& item : frames.items()) {
        PhotoRef photo = readPhoto(item);
        if (!frameIDs.insert(photo.frameID).second)
            item["frameID"].fail("repeats a frame listed before");
        entry.photos.push_back(std::move(photo));
    }
    if (entry.photos.empty())
        frames.fail("must list the subject’s photos");

    for (const auto& [topic, value] : node["statuses"].members()) {
        if (!isTopic(topic))
            value.fail("is not a topic of checklist catalogue " + currentCatalog());
        auto status = coachingReviewStatus(value.string());
        if (!status)
            value.fail("must be \"notAssessed\", \"looksConsistent\", \"practiceCueApplies\" or "
                       "\"cannotAssess\"");
        entry.review.statuses.emplace(topic, *status);
    }
    return entry;
}

std::string at(std::size_t subject) {
    return "subjects[" + std::to_string(subject) + "]";
}

} // namespace

ChecklistFile checklistFromJson(const json::Node& root) {
    json::expectHeader(root, checklistFormat, 1);
    ChecklistFile file;
    readCatalogVersion(root, file);
    std::set<std::string> subjects;
    for (const json::Node& item : root["subjects"].items()) {
        ChecklistEntry entry = readEntry(item, file.catalogVersion);
        if (!subjects.insert(entry.review.subjectID).second)
            item["subjectID"].fail("repeats a subject listed before");
        file.subjects.push_back(std::move(entry));
    }
    return file;
}

json::Json toJson(const ChecklistFile& file) {
    json::Json root = json::header(checklistFormat, 1);
    root["catalogVersion"] = file.catalogVersion;
    json::Json subjects = json::Json::array();
    for (const ChecklistEntry& entry : file.subjects) {
        json::Json frames = json::Json::array();
        for (const PhotoRef& photo : entry.photos)
            frames.push_back({{"frameID", photo.frameID}, {"sourceHash", photo.sourceHash}});
        json::Json statuses = json::Json::object();
        // Catalogue order reads better than the map's alphabetical order.
        for (const CoachingTopic& topic : CoachingChecklist::catalog())
            if (auto it = entry.review.statuses.find(topic.id); it != entry.review.statuses.end())
                statuses[topic.id] = rawValue(it->second);
        for (const auto& [topic, status] : entry.review.statuses)
            if (!statuses.contains(topic))
                statuses[topic] = rawValue(status);
        subjects.push_back({{"subjectID", entry.review.subjectID},
                            {"cornerDirection", rawValue(entry.review.cornerDirection)},
                            {"frames", std::move(frames)},
                            {"statuses", std::move(statuses)}});
    }
    root["subjects"] = std::move(subjects);
    return root;
}

std::map<std::string, CoachingChecklistReview>
matchChecklist(const ChecklistFile& file, const std::vector<ReviewFrame>& frames,
               const json::Source& source) {
    auto subjects = sessionSubjects(frames, source);
    std::map<std::string, CoachingChecklistReview> reviews;
    for (std::size_t i = 0; i < file.subjects.size(); ++i) {
        const ChecklistEntry& entry = file.subjects[i];
        auto subject = subjects.find(entry.review.subjectID);
        if (subject == subjects.end())
            failMismatch(source, at(i) + ".subjectID names no pair or lone photo of this session");
        const auto& members = subject->second;
        if (entry.photos.size() != members.size())
            failMismatch(source, at(i) + (members.size() == 1
                                              ? ".frames must list the one photo of its subject"
                                              : ".frames must list both photos of its pair"));
        for (std::size_t j = 0; j < entry.photos.size(); ++j) {
            const PhotoRef& photo = entry.photos[j];
            std::string path = at(i) + ".frames[" + std::to_string(j) + "]";
            const ReviewFrame* frame = nullptr;
            for (const ReviewFrame* member : members)
                if (member->id == photo.frameID)
                    frame = member;
            if (!frame)
                failMismatch(source, path + ".frameID is not a photo of its subject");
            if (frame->sourceHash != photo.sourceHash)
                failMismatch(source, path + ".sourceHash is not the hash of the photo this session "
                                            "analysed");
        }
        reviews.emplace(entry.review.subjectID, entry.review);
    }
    return reviews;
}

} // namespace dravik::coaching
