#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tessary {

// Asks the user for one JSON file; the model never shows a dialog itself.
class FileChooser {
  public:
    virtual ~FileChooser() = default;
    // None when the user cancels.
    virtual std::optional<std::filesystem::path> chooseJson(const std::string& caption) = 0;
};

} // namespace tessary
