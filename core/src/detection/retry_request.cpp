// SPDX-License-Identifier: Apache-2.0
#include "dravik/detection.h"

#include "json/document_io.h"
#include "json/geometry_codec.h"

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-retry-request";
constexpr std::string_view kind = "retry request";

RetryRequest read(const json::Node& root) {
    json::expectHeader(root, format, 1);
    RetryRequest request;
    json::Node source = root["source"];
    request.source = source.nonEmptyString();
    if (!std::filesystem::path(request.source).is_absolute())
        source.fail("must be an absolute path");
    request.sourceHash = json::readContentHash(root["sourceHash"]);
    json::Node crop = root["crop"];
    request.crop = json::readRect(crop);
    if (request.crop.width <= 0 || request.crop.height <= 0)
        crop.fail("must have a positive width and height");
    if (auto wheel = root.find("wheel")) {
        WheelAxis axis{json::readPoint((*wheel)["a"]), json::readPoint((*wheel)["b"])};
        if (axis.a == axis.b)
            wheel->fail("must join two different points");
        request.wheel = axis;
    }
    return request;
}

} // namespace

std::string RetryRequest::encode() const {
    json::Json root = json::header(format, 1);
    root["source"] = source;
    root["sourceHash"] = sourceHash;
    root["crop"] = json::write(crop);
    if (wheel)
        root["wheel"] = json::Json{{"a", json::write(wheel->a)}, {"b", json::write(wheel->b)}};
    return json::encodeDocument(root, kind, json::Layout::compact, read);
}

RetryRequest RetryRequest::decode(std::string_view text, const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

RetryRequest RetryRequest::load(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

} // namespace dravik
