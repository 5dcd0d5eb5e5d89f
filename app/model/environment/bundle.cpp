// SPDX-License-Identifier: Apache-2.0
#include "environment/bundle.h"

#include "dravik/launch_config.h"

#include <QCoreApplication>
#include <cstdlib>
#include <optional>

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

std::optional<std::filesystem::path> Bundle::dataDirectory() const {
    try {
        if (auto text = dravik::readDataDirectory(resourcePath("data-directory.txt")))
            return expandUserPath(*text);
    } catch (const std::exception&) {
        // An unreadable setting is no setting: discovery says it needs a configured folder.
    }
    return std::nullopt;
}

namespace {

std::filesystem::path environmentPath(const char* name) {
    const char* value = std::getenv(name);
    return value && *value ? std::filesystem::path(value) : std::filesystem::path();
}

std::filesystem::path home() {
    return environmentPath("HOME");
}

std::filesystem::path dataHome() {
    // The XDG rules ignore a relative value.
    if (auto configured = environmentPath("XDG_DATA_HOME"); configured.is_absolute())
        return configured;
    return home() / ".local" / "share";
}

// The rest of the text after a prefix that must end there or at a slash.
std::optional<std::string_view> after(std::string_view text, std::string_view prefix) {
    if (!text.starts_with(prefix))
        return std::nullopt;
    std::string_view rest = text.substr(prefix.size());
    if (!rest.empty() && rest.front() != '/')
        return std::nullopt;
    while (rest.starts_with('/'))
        rest.remove_prefix(1);
    return rest;
}

} // namespace

std::filesystem::path expandUserPath(std::string_view text) {
    if (auto rest = after(text, "~"))
        return rest->empty() ? home() : home() / *rest;
    if (auto rest = after(text, "$XDG_DATA_HOME"))
        return rest->empty() ? dataHome() : dataHome() / *rest;
    return std::filesystem::path(text);
}

} // namespace tessary
