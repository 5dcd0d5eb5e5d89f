// SPDX-License-Identifier: Apache-2.0
#include "dravik/launch_config.h"

#include "dravik/error.h"
#include "dravik/file_io.h"

#include "json/document_io.h"
#include <algorithm>

namespace dravik {

namespace {

constexpr std::string_view presetKind = "preset list";
constexpr std::string_view folderKind = "data folder setting";
constexpr std::string_view presetKeys[] = {"title", "manifest", "results"};

std::string readPath(const json::Node& node) {
    std::string path = node.nonEmptyString();
    if (path.find('\0') != std::string::npos)
        node.fail("must not contain a NUL character");
    return path;
}

LaunchPreset readPreset(const json::Node& node) {
    if (!node.isObject())
        node.fail("must be an object");
    for (const auto& [key, value] : node.members())
        if (std::find(std::begin(presetKeys), std::end(presetKeys), key) == std::end(presetKeys))
            node.failMember(key, "is not a key of a preset (only \"title\", \"manifest\" and "
                                 "\"results\" are)");
    return {node["title"].string(), readPath(node["manifest"]), readPath(node["results"])};
}

std::vector<LaunchPreset> readPresets(const json::Node& root) {
    std::vector<LaunchPreset> presets;
    for (const json::Node& item : root.items())
        presets.push_back(readPreset(item));
    return presets;
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

} // namespace

std::vector<LaunchPreset> decodeLaunchPresets(std::string_view json, const std::string& fileLabel) {
    return json::decodeDocument(json, fileLabel, presetKind, readPresets);
}

std::vector<LaunchPreset> loadLaunchPresets(const std::filesystem::path& file) {
    return decodeLaunchPresets(readWholeFile(file, presetKind, maxLaunchConfigBytes).bytes,
                               json::fileLabel(file));
}

std::optional<std::string> decodeDataDirectory(std::string_view text,
                                               const std::string& fileLabel) {
    const auto fail = [&](const std::string& problem) {
        throw DravikError(json::quoted(fileLabel) + " is not a valid " + std::string(folderKind) +
                          ": " + problem + ".");
    };
    if (text.starts_with("\xef\xbb\xbf")) // a byte order mark some editors write
        text.remove_prefix(3);
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    if (text.empty())
        return std::nullopt;
    for (unsigned char c : text)
        if (c < 0x20 || c == 0x7f)
            fail("it must hold one folder path on one line, without control characters");
    try {
        (void)json::Json(std::string(text)).dump(); // refuses what is not UTF-8
    } catch (const json::Json::exception&) {
        fail("it is not UTF-8 text");
    }
    return std::string(text);
}

std::optional<std::string> readDataDirectory(const std::filesystem::path& file) {
    return decodeDataDirectory(readWholeFile(file, folderKind, maxLaunchConfigBytes).bytes,
                               json::fileLabel(file));
}

} // namespace dravik
