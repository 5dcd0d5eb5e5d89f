// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/session_arrangement.h"

#include <cstddef>
#include <filesystem>
#include <functional>

namespace dravik::arrangement {

// SessionArrangement::apply, with the commit's test hook (see commitFiles).
ArrangementEffect apply(const SessionArrangement& arrangement,
                        const std::filesystem::path& manifest, const std::filesystem::path& results,
                        const std::function<void(std::size_t)>& beforeRename);

} // namespace dravik::arrangement
