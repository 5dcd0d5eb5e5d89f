#pragma once

#include <filesystem>
#include <string>

namespace dravik {

// Throws the DravikError sentence for a failed write of `file`, by errno value: disk full,
// read-only or forbidden folder, missing folder, or the system's own reason.
[[noreturn]] void throwWriteFailure(int error, const std::filesystem::path& file);

// The file name in typographic quotes, as every sentence names it.
std::string quotedName(const std::filesystem::path& file);

} // namespace dravik
