// SPDX-License-Identifier: Apache-2.0
#include "detection/result_codec.h"
#include "dravik/file_io.h"
#include "dravik/store.h"
#include "lean/lean_json.h"
#include "pairs/pairs_json.h"
#include "store/known_reviews.h"
#include "store/review_text.h"

#include "json/document_io.h"
#include "json/geometry_codec.h"
#include <algorithm>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
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
    frame.role = json::readRole(node["role"]);
    frame.riderDisplayName = node["riderDisplayName"].string();
    frame.name = node["name"].string();
    frame.file = json::readPhotoPath(node["file"]);
    frame.sourceHash = json::readContentHash(node["sourceHash"]);
    frame.imageSize = json::readImageSize(node["imageSize"]);
    frame.panel = json::readRectInside(node["panel"], frame.imageSize);
    frame.crop = json::readRectInside(node["crop"], frame.imageSize);
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

struct Annotations {
    std::map<std::string, LeanAnnotation> lean;
    std::map<std::string, PairContext> contexts;
    std::map<std::string, LeanPairContext> leanContexts;
    std::map<std::string, PairPhotoAssessment> assessments;
};

// Members of an optional object keyed by pair id; reviews saved before these keys existed lack
// them.
template <class Read>
auto readByPair(const json::Node& root, std::string_view key, const std::set<std::string>& pairs,
                Read read) {
    std::map<std::string, decltype(read(root, std::string()))> values;
    auto object = root.find(key);
    if (!object)
        return values;
    for (const auto& [pairID, node] : object->members()) {
        if (!pairs.contains(pairID))
            node.fail("belongs to a pair the document does not have");
        values.emplace(pairID, read(node, pairID));
    }
    return values;
}

Annotations readAnnotations(const json::Node& root, const std::vector<ReviewFrame>& frames) {
    Annotations out;
    if (auto lean = root.find("leanAnnotations")) {
        for (const auto& [frameID, node] : lean->members()) {
            auto frame = std::find_if(frames.begin(), frames.end(),
                                      [&id = frameID](const ReviewFrame& f) { return f.id == id; });
            if (frame == frames.end())
                node.fail("belongs to a frame the document does not have");
            LeanAnnotation annotation = json::readLeanAnnotation(node);
            if (annotation.frameID != frameID)
                node["frameID"].fail("must be the frame id it is filed under");
            try {
                annotation.validate(*frame);
            } catch (const DravikError& error) {
                node.fail("does not fit its frame: " + json::clause(error.what()));
            }
            out.lean.emplace(frameID, std::move(annotation));
        }
    }
    std::set<std::string> pairs;
    for (const ReviewFrame& frame : frames)
        pairs.insert(frame.pairID);
    // A context repeats its pair id; the key it is filed under must agree.
    auto filedUnder = [](const json::Node& node, const std::string& pairID, auto context) {
        if (context.pairID != pairID)
            node["pairID"].fail("must be the pair id it is filed under");
        return context;
    };
    out.contexts = readByPair(root, "pairContexts", pairs,
                              [&](const json::Node& node, const std::string& pairID) {
                                  return filedUnder(node, pairID, pairContextFromJson(node));
                              });
    out.leanContexts = readByPair(
        root, "leanPairContexts", pairs, [&](const json::Node& node, const std::string& pairID) {
            return filedUnder(node, pairID, json::readLeanPairContext(node));
        });
    out.assessments =
        readByPair(root, "pairAssessments", pairs, [](const json::Node& node, const std::string&) {
            return pairPhotoAssessmentFromJson(node);
        });
    return out;
}

// Refuses a frame whose id or pair role repeats one already admitted.
void admitFrame(const ReviewFrame& frame, std::set<std::string>& ids,
                std::set<std::pair<std::string, std::string>>& pairRoles,
                const std::function<void(std::string_view key, const std::string& problem)>& fail) {
    if (!ids.insert(frame.id).second)
        fail("id", "repeats the id of another frame");
    if (!pairRoles.emplace(frame.pairID, frame.role).second)
        fail("role", "repeats the role of another frame of the same pair");
}

// Everything but the frames: format, identity, revision.
std::pair<std::string, std::int64_t> readHead(const json::Node& root) {
    json::expectHeader(root, format, 1);
    std::string identity = json::readContentHash(root["identity"]);
    json::Node revisionNode = root["revision"];
    std::int64_t revision = revisionNode.integer();
    if (revision < 0)
        revisionNode.fail("must not be negative");
    if (revision >= ReviewDocument::maxRevision)
        revisionNode.fail("must be below 2^62, so that it can still be raised");
    return {std::move(identity), revision};
}

ReviewDocument read(const json::Node& root) {
    auto [identity, revision] = readHead(root);
    std::vector<ReviewFrame> frames;
    std::set<std::string> ids;
    std::set<std::pair<std::string, std::string>> pairRoles;
    for (const json::Node& item : root["frames"].items()) {
        ReviewFrame frame = readFrame(item);
        admitFrame(frame, ids, pairRoles, [&](std::string_view key, const std::string& problem) {
            item[std::string(key)].fail(problem);
        });
        frames.push_back(std::move(frame));
    }
    Annotations annotations = readAnnotations(root, frames);
    // Each store below counts one revision; starting that many lower keeps the saved revision.
    const auto stores = static_cast<std::int64_t>(
        annotations.lean.size() + annotations.contexts.size() + annotations.leanContexts.size());
    ReviewDocument document(std::move(identity), std::move(frames), revision - stores);
    for (const auto& [id, annotation] : annotations.lean)
        document.setLeanAnnotation(id, annotation);
    for (const auto& [id, context] : annotations.contexts)
        document.setPairContext(id, context);
    for (const auto& [id, context] : annotations.leanContexts)
        document.setLeanPairContext(id, context);
    document.setPairAssessments(std::move(annotations.assessments));
    return document;
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

std::string framePath(std::size_t index) {
    return "frames[" + std::to_string(index) + "]";
}

// An edit changes one frame, yet every save writes them all: the text of each frame, checked by
// the reader once, is kept while the frame stays equal, so a save re-encodes only what changed.
class FrameTexts {
  public:
    // `index` names the frame in messages only. Shared, not copied: a save of 200 frames would
    // otherwise copy every text once more before assembling them.
    std::shared_ptr<const std::string> text(const ReviewFrame& frame, std::uint64_t stamp,
                                            std::size_t index) {
        {
            const std::lock_guard guard(mutex_);
            auto it = texts_.find(frame.id);
            // Comparing whole frames costs as much as encoding them once their memory has gone
            // cold, which it has after a few photos were decoded: the stamp answers first.
            if (it != texts_.end() && (it->second.stamp == stamp || it->second.frame == frame)) {
                it->second.stamp = stamp;
                return it->second.text;
            }
        }
        auto text = std::make_shared<const std::string>(encodeFrame(frame, index));
        const std::lock_guard guard(mutex_);
        if (texts_.size() >= maxFrames)
            texts_.clear();
        texts_.insert_or_assign(frame.id, Entry{frame, stamp, text});
        return text;
    }

  private:
    static constexpr std::size_t maxFrames = 4096;
    struct Entry {
        ReviewFrame frame;
        std::uint64_t stamp = 0;
        std::shared_ptr<const std::string> text;
    };

    // The frame as an element of the document's "frames" array, indented to sit there.
    static std::string encodeFrame(const ReviewFrame& frame, std::size_t index) {
        const json::Json value = writeFrame(frame);
        const json::Source source{"", std::string(kind), true};
        readFrame(json::Node(value, source, framePath(index)));
        std::string text = json::dump(value, kind, json::Layout::pretty);
        if (!text.empty() && text.back() == '\n')
            text.pop_back();
        std::string indented = "    ";
        indented.reserve(text.size() + text.size() / 8);
        for (char c : text) {
            indented += c;
            if (c == '\n')
                indented += "    ";
        }
        return indented;
    }

    std::mutex mutex_;
    std::map<std::string, Entry> texts_;
};

FrameTexts& frameTexts() {
    static FrameTexts texts;
    return texts;
}

} // namespace

// The reader's checks run on every part before anything is returned.
ReviewText encodeReviewText(const ReviewDocument& document) {
    json::Json root = json::header(format, 1);
    root["identity"] = document.identity();
    root["revision"] = document.revision();
    root["frames"] = json::Json::array();
    json::Json lean = json::Json::object();
    for (const auto& [frameID, annotation] : document.leanAnnotations())
        lean[frameID] = json::write(annotation);
    root["leanAnnotations"] = std::move(lean);
    json::Json contexts = json::Json::object();
    for (const auto& [pairID, context] : document.pairContexts())
        contexts[pairID] = toJson(context);
    root["pairContexts"] = std::move(contexts);
    json::Json leanContexts = json::Json::object();
    for (const auto& [pairID, context] : document.leanPairContexts())
        leanContexts[pairID] = json::write(context);
    root["leanPairContexts"] = std::move(leanContexts);
    json::Json assessments = json::Json::object();
    for (const auto& [pairID, assessment] : document.pairAssessments())
        assessments[pairID] = toJson(assessment);
    root["pairAssessments"] = std::move(assessments);

    const json::Source source{"", std::string(kind), true};
    const json::Node rootNode(root, source);
    readHead(rootNode);
    std::set<std::string> ids;
    std::set<std::pair<std::string, std::string>> pairRoles;
    std::vector<std::shared_ptr<const std::string>> frames;
    frames.reserve(document.frames().size());
    for (std::size_t i = 0; i < document.frames().size(); ++i) {
        const ReviewFrame& frame = document.frames()[i];
        admitFrame(frame, ids, pairRoles, [&](std::string_view key, const std::string& problem) {
            json::Node(root, source, framePath(i)).failMember(key, problem);
        });
        frames.push_back(frameTexts().text(frame, document.frameStamp(i), i));
    }
    readAnnotations(rootNode, document.frames());

    return {json::dump(root, kind, json::Layout::pretty), std::move(frames)};
}

std::vector<std::string_view> ReviewText::pieces() const {
    if (frames.empty())
        return {outline};
    constexpr std::string_view emptyFrames = "\n  \"frames\": []";
    const std::size_t at = outline.find(emptyFrames) + emptyFrames.size() - 2;
    const std::string_view text = outline;
    std::vector<std::string_view> parts{text.substr(0, at)};
    for (const auto& frame : frames) {
        parts.push_back(&frame == &frames.front() ? "[\n" : ",\n");
        parts.push_back(*frame);
    }
    parts.push_back("\n  ]");
    parts.push_back(text.substr(at + 2));
    return parts;
}

// Assembled in one buffer of its final size: growing a string of megabytes piece by piece costs
// more than everything else a save does.
std::string ReviewText::joined() const {
    const std::vector<std::string_view> parts = pieces();
    std::size_t size = 0;
    for (std::string_view part : parts)
        size += part.size();
    std::string out;
    out.reserve(size);
    for (std::string_view part : parts)
        out += part;
    return out;
}

std::string ReviewStore::encode(const ReviewDocument& document) {
    return encodeReviewText(document).joined();
}

ReviewDocument ReviewStore::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

ReviewDocument ReviewStore::load(const std::filesystem::path& file) {
    const FileContents contents = readWholeFile(file, kind, json::maxFileBytes);
    ReviewDocument document = decode(contents.bytes, json::fileLabel(file));
    rememberReadReview(file, contents.stamp, document.revision());
    return document;
}

std::string ReviewStore::reviewFileName(const ReviewDocument& document) {
    if (!json::isContentHash(document.identity()))
        throw DravikError("The review has no valid identity, so it cannot be given a file name.");
    return "joint-review-" + document.identity().substr(7, 12) + ".json";
}

} // namespace dravik
