// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tessary {

// Asks the user for a file or a folder; the model never shows a dialog itself. Every question is
// answered with none when the user cancels.
class FileChooser {
  public:
    virtual ~FileChooser() = default;
    // An existing JSON file, starting in the folder `startIn` (or wherever the chooser likes when
    // it is empty).
    virtual std::optional<std::filesystem::path>
    chooseJson(const std::string& caption, const std::filesystem::path& startIn) = 0;
    // A file to write, offering `suggested`; `filter` is as "PDF (*.pdf)".
    virtual std::optional<std::filesystem::path>
    chooseSaveFile(const std::string& caption, const std::filesystem::path& suggested,
                   const std::string& filter) = 0;
    // An existing folder, starting in `startIn`.
    virtual std::optional<std::filesystem::path>
    chooseFolder(const std::string& caption, const std::filesystem::path& startIn) = 0;
};

// For programs without a window: every question is cancelled.
class CancellingFileChooser : public FileChooser {
  public:
    std::optional<std::filesystem::path> chooseJson(const std::string&,
                                                    const std::filesystem::path&) override {
        return std::nullopt;
    }
    std::optional<std::filesystem::path>
    chooseSaveFile(const std::string&, const std::filesystem::path&, const std::string&) override {
        return std::nullopt;
    }
    std::optional<std::filesystem::path> chooseFolder(const std::string&,
                                                      const std::filesystem::path&) override {
        return std::nullopt;
    }
};

} // namespace tessary
