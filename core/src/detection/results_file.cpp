// SPDX-License-Identifier: Apache-2.0
#include "detection/result_codec.h"
#include "dravik/detection.h"

#include "json/document_io.h"
#include "json/geometry_codec.h"
#include <set>
#include <utility>

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-results";
constexpr std::string_view kind = "results file";

ResultsFile read(const json::Node& root) {
    json::expectHeader(root, format, 1);
    ResultsFile file;
    file.detector = root["detector"].nonEmptyString();
    file.detectorVersion = root["detectorVersion"].string();
    std::set<std::pair<std::string, std::string>> seen;
    for (const json::Node& item : root["riders"].items()) {
        RiderResults rider;
        rider.pairID = item["pairID"].nonEmptyString();
        rider.riderID = item["riderID"].nonEmptyString();
        if (!seen.emplace(rider.pairID, rider.riderID).second)
            item.fail("repeats a rider already listed (pair “" + rider.pairID + "”, rider “" +
                      rider.riderID + "”)");
        rider.sourceHash = json::readContentHash(item["sourceHash"]);
        for (const json::Node& result : item["results"].items())
            rider.results.push_back(json::readResult(result));
        file.riders.push_back(std::move(rider));
    }
    return file;
}

} // namespace

std::string ResultsFile::encode() const {
    json::Json root = json::header(format, 1);
    root["detector"] = detector;
    root["detectorVersion"] = detectorVersion;
    json::Json list = json::Json::array();
    for (const RiderResults& rider : riders) {
        json::Json results = json::Json::array();
        for (const DravikResult& result : rider.results)
            results.push_back(json::write(result));
        list.push_back(json::Json{{"pairID", rider.pairID},
                                  {"riderID", rider.riderID},
                                  {"sourceHash", rider.sourceHash},
                                  {"results", std::move(results)}});
    }
    root["riders"] = std::move(list);
    return json::encodeDocument(root, kind, json::Layout::pretty, read);
}

ResultsFile ResultsFile::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

ResultsFile ResultsFile::load(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

} // namespace dravik
