// SPDX-License-Identifier: Apache-2.0
#include "detection/result_codec.h"
#include "dravik/detection.h"

#include "json/document_io.h"

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-detection-retry";
constexpr std::string_view kind = "detection retry";

DetectionRetry read(const json::Node& root) {
    json::expectHeader(root, format, 1);
    return json::readRetry(root);
}

} // namespace

std::string DetectionRetry::encode() const {
    json::Json root = json::header(format, 1);
    root.update(json::write(*this));
    return json::encodeDocument(root, kind, json::Layout::pretty, read);
}

DetectionRetry DetectionRetry::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

DetectionRetry DetectionRetry::load(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

} // namespace dravik
