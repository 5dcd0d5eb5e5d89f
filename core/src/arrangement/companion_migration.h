// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "arrangement/arrangement_plan.h"
#include "arrangement/file_set_commit.h"
#include "dravik/review.h"
#include "dravik/session_arrangement.h"

#include <filesystem>
#include <vector>

namespace dravik::arrangement {

// The companion files beside the manifest in `folder`, keyed by frame or pair, carried over to
// the arranged frames: lean proposals and photo framing follow their photos; single-photo notes
// and checklist findings of pairs that are not kept are dropped and counted in `effect`. A
// companion file that does not match the session as it is (it is refused already) is left as
// it is. Only the files that change are returned.
std::vector<FileWrite> migrateCompanions(const std::filesystem::path& folder,
                                         const std::vector<ReviewFrame>& before,
                                         const std::vector<ReviewFrame>& after,
                                         const ArrangementPlan& plan, ArrangementEffect& effect);

} // namespace dravik::arrangement
