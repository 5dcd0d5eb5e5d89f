#pragma once

#include <QPointer>
#include <QWidget>
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

// A modal open dialog limited to JSON files.
class DialogFileChooser : public FileChooser {
  public:
    explicit DialogFileChooser(QWidget* parent = nullptr) : parent_(parent) {}
    void setParent(QWidget* parent) { parent_ = parent; }
    std::optional<std::filesystem::path> chooseJson(const std::string& caption) override;

  private:
    QPointer<QWidget> parent_;
};

} // namespace tessary
