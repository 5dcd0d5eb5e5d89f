// SPDX-License-Identifier: Apache-2.0
#include "coaching/single_photo_codec.h"
#include "dravik/coaching.h"

#include "json/document_io.h"

namespace dravik {

std::map<std::string, SinglePhotoCoaching>
SinglePhotoCoaching::decode(std::string_view text, const std::string& fileLabel,
                            const std::vector<ReviewFrame>& frames) {
    return json::decodeDocument(
        text, fileLabel, coaching::singlePhotoKind, [&](const json::Node& root) {
            return coaching::matchSinglePhotos(coaching::singlePhotoFileFromJson(root), frames,
                                               root.source());
        });
}

std::map<std::string, SinglePhotoCoaching>
SinglePhotoCoaching::load(const std::filesystem::path& file,
                          const std::vector<ReviewFrame>& frames) {
    json::Source source{json::fileLabel(file), std::string(coaching::singlePhotoKind)};
    return decode(json::readFile(file, source), source.label, frames);
}

std::string SinglePhotoCoaching::encode(const std::vector<SinglePhotoCoaching>& records) {
    return json::encodeDocument(coaching::singlePhotoFileToJson(records), coaching::singlePhotoKind,
                                json::Layout::pretty, coaching::singlePhotoFileFromJson);
}

} // namespace dravik
