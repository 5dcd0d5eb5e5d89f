// SPDX-License-Identifier: Apache-2.0
// The pair context and photo assessment readers, over an object that holds one of each:
// {"context": {...}, "photoAssessment": {...}}.

#include "fuzz_support.h"
#include "pairs/pairs_json.h"

#include "json/json_reader.h"
#include <utility>

namespace {

using Value = std::pair<dravik::PairContext, dravik::PairPhotoAssessment>;

Value decode(std::string_view text) {
    const dravik::json::Source source{"pairs.json", "pair review"};
    const dravik::json::Json root = dravik::json::parse(text, source);
    const dravik::json::Node node(root, source);
    return {dravik::pairContextFromJson(node["context"]),
            dravik::pairPhotoAssessmentFromJson(node["photoAssessment"])};
}

std::string encode(const Value& value) {
    dravik::json::Json root = dravik::json::Json::object();
    root["context"] = dravik::toJson(value.first);
    root["photoAssessment"] = dravik::toJson(value.second);
    return root.dump();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(data, size, decode, encode);
    return 0;
}
