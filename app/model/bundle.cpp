#include "bundle.h"

#include <QCoreApplication>

namespace tessary {

Bundle Bundle::fromApplication() {
    const std::filesystem::path bin = QCoreApplication::applicationDirPath().toStdString();
    return Bundle(bin.parent_path());
}

std::filesystem::path Bundle::resourcePath(std::string_view name) const {
    return root_ / TESSARY_SHARE_SUBDIR / name;
}

std::filesystem::path Bundle::batchProgram() const {
    return root_ / TESSARY_LIBEXEC_SUBDIR / "dravik-batch";
}

} // namespace tessary
