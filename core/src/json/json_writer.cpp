// SPDX-License-Identifier: Apache-2.0
#include "json/json_writer.h"

#include <cmath>

namespace dravik::json {

namespace {

// nlohmann writes NaN and infinity as null, which would read back as a different document.
void requireFinite(const Node& node) {
    const Json& value = node.json();
    if (value.is_number_float() && !std::isfinite(value.get<double>()))
        node.fail("is not a finite number");
    if (value.is_array())
        for (const Node& item : node.items())
            requireFinite(item);
    else if (value.is_object())
        for (const auto& member : node.members())
            requireFinite(member.second);
}

} // namespace

Json header(std::string_view format, std::int64_t version) {
    Json root = Json::object();
    root["format"] = format;
    root["version"] = version;
    return root;
}

std::string dump(const Json& value, std::string_view kind, Layout layout) {
    Source source{"", std::string(kind), true};
    requireFinite(Node(value, source));
    try {
        if (layout == Layout::compact)
            return value.dump();
        return value.dump(2) + "\n";
    } catch (const Json::exception&) {
        fail(source, "it holds text that is not valid UTF-8");
    }
}

} // namespace dravik::json
