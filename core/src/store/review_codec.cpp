#include "detection/result_codec.h"
#include "dravik/store.h"

#include "json/document_io.h"
#include "json/geometry_codec.h"
#include <algorithm>
#include <map>
#include <set>

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-review";
constexpr std::string_view kind = "review document";

std::map<std::string, JointEdit> readEdits(const json::Node& node) {
    std::map<std::string, JointEdit> edits;
    for (const auto& [joint, value] : node.members()) {
        if (!InspectionRenderer::jointID(joint))
            value.fail("is not a known joint name");
        json::Node stateNode = value["state"];
        auto state = jointReviewState(stateNode.string());
        if (!state)
            stateNode.fail("must be one of \"corrected\", \"confirmedVisible\", \"obscured\" or "
                           "\"uncertain\"");
        JointEdit edit{*state, std::nullopt};
        auto point = value.find("point");
        if (*state == JointReviewState::obscured && point)
            point->fail("must be absent for an obscured joint");
        if (*state != JointReviewState::obscured && !point)
            value.failMember("point", "is required unless the joint is obscured");
        if (point)
            edit.point = json::readPoint(*point);
        edits.emplace(joint, edit);
    }
    return edits;
}

ReviewFrame readFrame(const json::Node& node) {
    ReviewFrame frame;
    json::Node id = node["id"];
    frame.id = id.nonEmptyString();
    json::Node role = node["role"];
    frame.role = role.string();
    if (frame.role != "subject" && frame.role != "reference")
        role.fail("must be \"subject\" or \"reference\"");
    frame.riderDisplayName = node["riderDisplayName"].string();
    frame.name = node["name"].string();
    frame.file = node["file"].nonEmptyString();
    frame.sourceHash = json::readContentHash(node["sourceHash"]);
    frame.imageSize = json::readImageSize(node["imageSize"]);
    json::Node panel = node["panel"];
    frame.panel = json::readRect(panel);
    json::requireInside(panel, frame.panel, frame.imageSize);
    json::Node crop = node["crop"];
    frame.crop = json::readRect(crop);
    json::requireInside(crop, frame.crop, frame.imageSize);
    frame.pairID = node["pairID"].nonEmptyString();
    frame.riderID = node["riderID"].nonEmptyString();
    if (frame.id != frame.pairID + "/" + frame.riderID)
        id.fail("must be the pair id and the rider id joined by \"/\"");
    for (const json::Node& result : node["raw"].items())
        frame.raw.push_back(json::readResult(result));
    for (const json::Node& retry : node["retries"].items())
        frame.retries.push_back(json::readRetry(retry));
    frame.edits = readEdits(node["edits"]);
    return frame;
}

ReviewDocument read(const json::Node& root) {
    json::expectHeader(root, format, 1);
    std::string identity = json::readContentHash(root["identity"]);
    json::Node revisionNode = root["revision"];
    std::int64_t revision = revisionNode.integer();
    if (revision < 0)
        revisionNode.fail("must not be negative");
    std::vector<ReviewFrame> frames;
    std::set<std::string> ids;
    std::set<std::pair<std::string, std::string>> pairRoles;
    for (const json::Node& item : root["frames"].items()) {
        ReviewFrame frame = readFrame(item);
        if (!ids.insert(frame.id).second)
            item["id"].fail("repeats the id of another frame");
        if (!pairRoles.emplace(frame.pairID, frame.role).second)
            item["role"].fail("repeats the role of another frame of the same pair");
        frames.push_back(std::move(frame));
    }
    // Lean annotations (by frame id) and pair contexts (by pair id) are read here once the
    // document holds them.
    return ReviewDocument(std::move(identity), std::move(frames), revision);
}

json::Json writeEdits(const std::map<std::string, JointEdit>& edits) {
    // Skeleton order reads better than alphabetical; unknown names go last so the check names them.
    std::vector<const std::pair<const std::string, JointEdit>*> ordered;
    for (const auto& entry : edits)
        ordered.push_back(&entry);
    std::stable_sort(ordered.begin(), ordered.end(), [](auto* a, auto* b) {
        return InspectionRenderer::jointID(a->first).value_or(1000) <
               InspectionRenderer::jointID(b->first).value_or(1000);
    });
    json::Json out = json::Json::object();
    for (const auto* entry : ordered) {
        json::Json edit{{"state", rawValue(entry->second.state)}};
        if (entry->second.point)
            edit["point"] = json::write(*entry->second.point);
        out[entry->first] = std::move(edit);
    }
    return out;
}

json::Json writeFrame(const ReviewFrame& frame) {
    json::Json raw = json::Json::array();
    for (const DravikResult& result : frame.raw)
        raw.push_back(json::write(result));
    json::Json retries = json::Json::array();
    for (const DetectionRetry& retry : frame.retries)
        retries.push_back(json::write(retry));
    return json::Json{{"id", frame.id},
                      {"role", frame.role},
                      {"riderDisplayName", frame.riderDisplayName},
                      {"name", frame.name},
                      {"file", frame.file},
                      {"sourceHash", frame.sourceHash},
                      {"imageSize", json::write(frame.imageSize)},
                      {"panel", json::write(frame.panel)},
                      {"crop", json::write(frame.crop)},
                      {"pairID", frame.pairID},
                      {"riderID", frame.riderID},
                      {"raw", std::move(raw)},
                      {"retries", std::move(retries)},
                      {"edits", writeEdits(frame.edits)}};
}

} // namespace

std::string ReviewStore::encode(const ReviewDocument& document) {
    json::Json root = json::header(format, 1);
    root["identity"] = document.identity();
    root["revision"] = document.revision();
    json::Json frames = json::Json::array();
    for (const ReviewFrame& frame : document.frames())
        frames.push_back(writeFrame(frame));
    root["frames"] = std::move(frames);
    // Lean annotations and pair contexts are written here once the document holds them.
    return json::encodeDocument(root, kind, json::Layout::pretty, read);
}

ReviewDocument ReviewStore::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

ReviewDocument ReviewStore::load(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

std::string ReviewStore::reviewFileName(const ReviewDocument& document) {
    if (!json::isContentHash(document.identity()))
        throw DravikError("The review has no valid identity, so it cannot be given a file name.");
    return "joint-review-" + document.identity().substr(7, 12) + ".json";
}

} // namespace dravik
