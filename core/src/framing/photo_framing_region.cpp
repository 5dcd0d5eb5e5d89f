// SPDX-License-Identifier: Apache-2.0
#include "dravik/framing.h"
#include "framing/framing_codec.h"

#include "json/document_io.h"

namespace dravik {

std::map<std::string, PixelRect>
PhotoFramingRegion::decode(std::string_view text, const std::string& fileLabel,
                           const std::vector<ReviewFrame>& frames) {
    // The whole file is decoded before any record is matched, so a malformed file is reported
    // as such even when an earlier record would not have fitted.
    auto regions =
        json::decodeDocument(text, fileLabel, framing::framingKind, framing::framingFileFromJson);
    return framing::matchFraming(regions, frames);
}

std::map<std::string, PixelRect> PhotoFramingRegion::load(const std::filesystem::path& file,
                                                          const std::vector<ReviewFrame>& frames) {
    json::Source source{json::fileLabel(file), std::string(framing::framingKind)};
    return decode(json::readFile(file, source), source.label, frames);
}

std::string PhotoFramingRegion::encode(const std::vector<PhotoFramingRegion>& regions) {
    return json::encodeDocument(framing::framingFileToJson(regions), framing::framingKind,
                                json::Layout::pretty, framing::framingFileFromJson);
}

} // namespace dravik
