// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/detection.h"
#include "dravik/manifest.h"
#include "dravik/review.h"

#include <string>

namespace dravik {

// ReviewStore::make on a manifest and results already in memory: `identity` is the content hash
// of the results file's bytes, and the labels (quoted file names) name the files in messages.
ReviewDocument makeReview(const SessionManifest& manifest, const ResultsFile& results,
                          std::string identity, const std::string& manifestLabel,
                          const std::string& resultsLabel);

} // namespace dravik
