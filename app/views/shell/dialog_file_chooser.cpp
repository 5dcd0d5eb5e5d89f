// SPDX-License-Identifier: Apache-2.0
#include "shell/dialog_file_chooser.h"

#include <QFileDialog>

namespace tessary {

namespace {

std::optional<std::filesystem::path> chosen(const QString& file) {
    if (file.isEmpty())
        return std::nullopt;
    return std::filesystem::path(file.toStdString());
}

QString text(const std::filesystem::path& path) {
    return QString::fromStdString(path.string());
}

} // namespace

std::optional<std::filesystem::path>
DialogFileChooser::chooseJson(const std::string& caption, const std::filesystem::path& startIn) {
    return chosen(QFileDialog::getOpenFileName(parent_, QString::fromStdString(caption),
                                               text(startIn), "JSON (*.json)"));
}

std::optional<std::filesystem::path> DialogFileChooser::chooseSaveFile(
    const std::string& caption, const std::filesystem::path& suggested, const std::string& filter) {
    return chosen(QFileDialog::getSaveFileName(parent_, QString::fromStdString(caption),
                                               text(suggested), QString::fromStdString(filter)));
}

std::optional<std::filesystem::path>
DialogFileChooser::chooseFolder(const std::string& caption, const std::filesystem::path& startIn) {
    return chosen(
        QFileDialog::getExistingDirectory(parent_, QString::fromStdString(caption), text(startIn)));
}

} // namespace tessary
