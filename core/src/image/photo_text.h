#pragma once

#include <filesystem>
#include <string>

namespace dravik {

// A photo's file name as it appears in messages: “IMG_0042.jpg”.
inline std::string quotedFileName(const std::filesystem::path& file) {
    return "\u201c" + file.filename().string() + "\u201d";
}

} // namespace dravik
