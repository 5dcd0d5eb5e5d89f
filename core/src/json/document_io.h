// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "json/json_reader.h"
#include "json/json_writer.h"
#include <filesystem>
#include <string>
#include <string_view>

namespace dravik::json {

// Parses `text` as a file of `kind` shown as `label`, then reads its root with `read(Node)`.
template <class Read>
auto decodeDocument(std::string_view text, const std::string& label, std::string_view kind,
                    Read read) {
    Source source{label, std::string(kind)};
    Json root = parse(text, source);
    return read(Node(root, source));
}

template <class Read>
auto loadDocument(const std::filesystem::path& file, std::string_view kind, Read read) {
    Source source{fileLabel(file), std::string(kind)};
    return decodeDocument(readFile(file, source), source.label, kind, read);
}

// Runs the same reader over `root` before writing it, so that nothing is written that could not
// be read back.
template <class Read>
std::string encodeDocument(const Json& root, std::string_view kind, Layout layout, Read read) {
    Source source{"", std::string(kind), true};
    read(Node(root, source));
    return dump(root, kind, layout);
}

} // namespace dravik::json
