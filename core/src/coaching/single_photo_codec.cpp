// SPDX-License-Identifier: Apache-2.0
#include "coaching/single_photo_codec.h"

#include "coaching/coaching_subjects.h"
#include "dravik/review.h"

#include "json/geometry_codec.h"
#include "json/json_writer.h"
#include <set>

namespace dravik::coaching {

namespace {

std::vector<std::string> readTexts(const json::Node& node) {
    std::vector<std::string> texts;
    for (const json::Node& item : node.items())
        texts.push_back(item.nonEmptyString());
    return texts;
}

json::Json writeTexts(const std::vector<std::string>& texts) {
    json::Json list = json::Json::array();
    for (const std::string& text : texts)
        list.push_back(text);
    return list;
}

std::string at(std::size_t record) {
    return "photos[" + std::to_string(record) + "]";
}

} // namespace

SinglePhotoCoaching singlePhotoFromJson(const json::Node& node) {
    SinglePhotoCoaching record;
    record.frameID = node["frameID"].nonEmptyString();
    record.sourceHash = json::readContentHash(node["sourceHash"]);
    json::Node observations = node["observations"];
    record.observations = readTexts(observations);
    if (record.observations.empty())
        observations.fail("must hold at least one observation");
    record.assessmentBasis = readTexts(node["assessmentBasis"]);
    return record;
}

json::Json toJson(const SinglePhotoCoaching& record) {
    return json::Json{{"frameID", record.frameID},
                      {"sourceHash", record.sourceHash},
                      {"observations", writeTexts(record.observations)},
                      {"assessmentBasis", writeTexts(record.assessmentBasis)}};
}

std::vector<SinglePhotoCoaching> singlePhotoFileFromJson(const json::Node& root) {
    json::expectHeader(root, singlePhotoFormat, 1);
    std::vector<SinglePhotoCoaching> records;
    std::set<std::string> frameIDs;
    for (const json::Node& item : root["photos"].items()) {
        SinglePhotoCoaching record = singlePhotoFromJson(item);
        if (!frameIDs.insert(record.frameID).second)
            item["frameID"].fail("repeats a photo that has a record before it");
        records.push_back(std::move(record));
    }
    return records;
}

json::Json singlePhotoFileToJson(const std::vector<SinglePhotoCoaching>& records) {
    json::Json root = json::header(singlePhotoFormat, 1);
    json::Json list = json::Json::array();
    for (const SinglePhotoCoaching& record : records)
        list.push_back(toJson(record));
    root["photos"] = std::move(list);
    return root;
}

std::map<std::string, SinglePhotoCoaching>
matchSinglePhotos(const std::vector<SinglePhotoCoaching>& records,
                  const std::vector<ReviewFrame>& frames, const json::Source& source) {
    auto subjects = sessionSubjects(frames, source);
    std::map<std::string, SinglePhotoCoaching> matched;
    for (std::size_t i = 0; i < records.size(); ++i) {
        const SinglePhotoCoaching& record = records[i];
        const ReviewFrame* frame = nullptr;
        for (const ReviewFrame& candidate : frames)
            if (candidate.id == record.frameID)
                frame = &candidate;
        if (!frame)
            failMismatch(source, at(i) + ".frameID names no photo of this session");
        // Notes judged without a reference rider belong to a rider's photo that stands alone.
        if (frame->role != "subject")
            failMismatch(source, at(i) + ".frameID names a reference rider’s photo");
        if (!subjects.contains(frame->id))
            failMismatch(source, at(i) + ".frameID names a photo compared with a reference rider");
        if (frame->sourceHash != record.sourceHash)
            failMismatch(source,
                         at(i) + ".sourceHash is not the hash of the photo this session analysed");
        matched.emplace(record.frameID, record);
    }
    return matched;
}

} // namespace dravik::coaching
