// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "state/snapshot.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tessary {

// Resolves the document's pairs and analyses the pair with `pairID`: its pair report when it has
// a reference rider (a rider photo alone has nothing to compare, so the window shows that photo's
// own coaching instead) and the lean report, with `proposals` shown for frames without lines.
// Fails when the pairs cannot be resolved or the analysis refuses the document.
Snapshot buildSnapshot(std::shared_ptr<const dravik::ReviewDocument> document,
                       const std::optional<std::string>& pairID,
                       const std::map<std::string, dravik::LeanAnnotation>& proposals);

} // namespace tessary
