#pragma once

#include <filesystem>
#include <string_view>

namespace dravik {

// Replaces `path` with `bytes` so that a crash at any instant leaves either the previous file or
// the complete new one, durably. On failure nothing on disk has changed; the DravikError names the
// file and the reason.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);

} // namespace dravik
