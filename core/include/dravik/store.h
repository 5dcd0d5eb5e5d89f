// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/error.h"
#include "dravik/manifest.h"
#include "dravik/review.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace dravik {

// A save refused because the file is not at the expected revision: another writer has saved
// since. Callers that can offer a way out (reload, merge, a copy) tell it apart; to everyone else
// it is a DravikError like any other.
class ReviewChangedElsewhere : public DravikError {
  public:
    using DravikError::DravikError;
};

namespace ReviewStore {
// An unreviewed document (revision 0, no edits) from a session manifest and its results file.
ReviewDocument make(const std::filesystem::path& manifest, const std::filesystem::path& results);
// The same from a manifest already read from `manifestPath`.
ReviewDocument make(const SessionManifest& manifest, const std::filesystem::path& manifestPath,
                    const std::filesystem::path& results);
ReviewDocument load(const std::filesystem::path& file);
// Refuses a saved review made for other detections or other photos than `raw`.
// `savedFile`, when given, is the file `saved` was read from, which the refusal names.
void validate(const ReviewDocument& saved, const ReviewDocument& raw,
              const std::filesystem::path& savedFile = {});
// Validates `saved` against `raw`, then gives it the session's pair photo assessments: those
// come from the manifest and are not part of what the reviewer saved.
ReviewDocument adopt(ReviewDocument saved, const ReviewDocument& raw,
                     const std::filesystem::path& savedFile = {});
// Writes atomically and durably. Refuses, writing nothing, when the file on disk is not at
// `expectedRevision` (a file that exists while none was expected counts as changed elsewhere):
// that refusal is a ReviewChangedElsewhere.
void save(const ReviewDocument& document, const std::filesystem::path& file,
          std::optional<std::int64_t> expectedRevision);
// Resolves a manifest's photo path; refuses absolute paths and anything leading out of its folder.
std::filesystem::path assetURL(const std::string& file, const std::filesystem::path& manifest);
// "joint-review-" + the first 12 hex digits of the identity + ".json".
std::string reviewFileName(const ReviewDocument& document);

std::string encode(const ReviewDocument& document);
ReviewDocument decode(std::string_view json, const std::string& fileLabel);
} // namespace ReviewStore

} // namespace dravik
