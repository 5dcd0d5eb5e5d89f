// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"

#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace dravik {

// Replaces `path` with `bytes` so that a crash at any instant leaves either the previous file or
// the complete new one, durably. On failure nothing on disk has changed; the DravikError names the
// file and the reason. Something at `path` that is not a regular file (a link, a folder, a pipe)
// is refused rather than replaced.
void writeFileAtomically(const std::filesystem::path& path, std::string_view bytes);
// The same with the bytes in pieces, written in order: a text of megabytes assembled from parts
// need not be copied into one buffer first.
void writeFileAtomically(const std::filesystem::path& path,
                         std::span<const std::string_view> pieces);
// The same for the file `name` inside `folder`.
void writeFileAtomically(const Folder& folder, const std::string& name, std::string_view bytes);
void writeFileAtomically(const Folder& folder, const std::string& name,
                         std::span<const std::string_view> pieces);

} // namespace dravik
