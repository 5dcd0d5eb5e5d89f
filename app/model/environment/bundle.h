// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace tessary {

// The install root the application runs from: its resources and the batch program. The build
// tree has the same layout, so an uninstalled build finds them the same way.
class Bundle {
  public:
    explicit Bundle(std::filesystem::path root) : root_(std::move(root)) {}
    // The root above the running executable's bin/ folder.
    static Bundle fromApplication();

    const std::filesystem::path& root() const { return root_; }
    // A file of share/tessary/, such as "launch.json" or "data-directory.txt".
    std::filesystem::path resourcePath(std::string_view name) const;
    // libexec/tessary/dravik-batch
    std::filesystem::path batchProgram() const;
    // The data folder named by "data-directory.txt" (trimmed, then expanded as expandUserPath
    // does); none when the resource is missing, unreadable or blank.
    std::optional<std::filesystem::path> dataDirectory() const;

  private:
    std::filesystem::path root_;
};

// A path as written in a resource file. A leading "~" stands for the user's home folder and a
// leading "$XDG_DATA_HOME" for the user's data folder (~/.local/share when unset), so that one
// installed file serves every user; any other text is the path itself.
std::filesystem::path expandUserPath(std::string_view text);

} // namespace tessary
