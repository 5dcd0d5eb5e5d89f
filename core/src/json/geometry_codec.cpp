// SPDX-License-Identifier: Apache-2.0
#include "json/geometry_codec.h"

#include <limits>

namespace dravik::json {

Point2 readPoint(const Node& node) {
    return {node["x"].number(), node["y"].number()};
}

Json write(const Point2& point) {
    return Json{{"x", point.x}, {"y", point.y}};
}

PixelRect readRect(const Node& node) {
    PixelRect rect{node["x"].number(), node["y"].number(), node["width"].number(),
                   node["height"].number()};
    if (rect.width < 0)
        node["width"].fail("must not be negative");
    if (rect.height < 0)
        node["height"].fail("must not be negative");
    return rect;
}

Json write(const PixelRect& rect) {
    return Json{{"x", rect.x}, {"y", rect.y}, {"width", rect.width}, {"height", rect.height}};
}

ImageSize readImageSize(const Node& node) {
    auto side = [&](std::string_view key) {
        Node value = node[key];
        std::int64_t n = value.integer();
        if (n <= 0 || n > std::numeric_limits<int>::max())
            value.fail("must be a positive whole number");
        return static_cast<int>(n);
    };
    return {side("width"), side("height")};
}

Json write(const ImageSize& size) {
    return Json{{"width", size.width}, {"height", size.height}};
}

PixelRect readRectInside(const Node& node, const ImageSize& size) {
    const PixelRect rect = readRect(node);
    const PixelRect image{0, 0, static_cast<double>(size.width), static_cast<double>(size.height)};
    if (!image.contains(rect))
        node.fail("must lie inside the " + std::to_string(size.width) + " × " +
                  std::to_string(size.height) + " photo");
    return rect;
}

std::optional<std::string> photoPathProblem(std::string_view file) {
    if (file.empty())
        return "must not be empty";
    if (file.find('\0') != std::string_view::npos)
        return "must not contain a NUL character";
    for (unsigned char c : file)
        if (c < 0x20 || c == 0x7f)
            return "must not contain a control character";
    for (std::size_t start = 0;;) {
        const std::size_t slash = file.find('/', start);
        const std::size_t end = slash == std::string_view::npos ? file.size() : slash;
        if (end == start && start > 0) // a leading "/" is an absolute path, refused elsewhere
            return "must not have an empty path component";
        if (slash == std::string_view::npos)
            return std::nullopt;
        start = slash + 1;
    }
}

std::string readPhotoPath(const Node& node) {
    std::string file = node.string();
    if (auto problem = photoPathProblem(file))
        node.fail(*problem);
    return file;
}

std::string readRole(const Node& node) {
    std::string role = node.string();
    if (role != "subject" && role != "reference")
        node.fail("must be \"subject\" or \"reference\"");
    return role;
}

bool isContentHash(std::string_view text) {
    constexpr std::string_view prefix = "sha256:";
    if (text.size() != prefix.size() + 64 || text.substr(0, prefix.size()) != prefix)
        return false;
    for (char c : text.substr(prefix.size()))
        if (!((c >= '0' && c <= '9') || (c >= 'a' && c <= 'f')))
            return false;
    return true;
}

std::string readContentHash(const Node& node) {
    std::string text = node.string();
    if (!isContentHash(text))
        node.fail("must be \"sha256:\" followed by 64 lower-case hexadecimal digits");
    return text;
}

} // namespace dravik::json
