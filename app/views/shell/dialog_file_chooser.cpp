#include "shell/dialog_file_chooser.h"

#include <QFileDialog>

namespace tessary {

std::optional<std::filesystem::path> DialogFileChooser::chooseJson(const std::string& caption) {
    const QString file = QFileDialog::getOpenFileName(parent_, QString::fromStdString(caption),
                                                      QString(), "JSON (*.json)");
    if (file.isEmpty())
        return std::nullopt;
    return std::filesystem::path(file.toStdString());
}

} // namespace tessary
