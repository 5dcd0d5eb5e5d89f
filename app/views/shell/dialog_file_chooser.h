// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "environment/file_chooser.h"

#include <QPointer>
#include <QWidget>

namespace tessary {

// A modal open dialog limited to JSON files.
class DialogFileChooser : public FileChooser {
  public:
    explicit DialogFileChooser(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }
    std::optional<std::filesystem::path> chooseJson(const std::string& caption,
                                                    const std::filesystem::path& startIn) override;
    std::optional<std::filesystem::path> chooseSaveFile(const std::string& caption,
                                                        const std::filesystem::path& suggested,
                                                        const std::string& filter) override;
    std::optional<std::filesystem::path>
    chooseFolder(const std::string& caption, const std::filesystem::path& startIn) override;

  private:
    QPointer<QWidget> parent_;
};

} // namespace tessary
