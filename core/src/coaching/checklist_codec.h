// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/coaching.h"

#include "json/json_reader.h"
#include <string>
#include <vector>

namespace dravik::coaching {

inline constexpr std::string_view checklistFormat = "dravik-coaching-checklist";
inline constexpr std::string_view checklistKind = "coaching checklist";

// A photo as a coaching file names it: the frame and the photo's content hash.
struct PhotoRef {
    std::string frameID;
    std::string sourceHash;
    bool operator==(const PhotoRef&) const = default;
};

struct ChecklistEntry {
    CoachingChecklistReview review;
    std::vector<PhotoRef> photos; // the subject's frames
    bool operator==(const ChecklistEntry&) const = default;
};

// "coaching-checklist.json" as written, before it is matched with a session.
struct ChecklistFile {
    std::string catalogVersion;
    std::vector<ChecklistEntry> subjects;
    bool operator==(const ChecklistFile&) const = default;
};

// Refuses another catalogue version, unknown topics or statuses, and a subject listed twice.
ChecklistFile checklistFromJson(const json::Node& root);
json::Json toJson(const ChecklistFile& file);

// The reviews by subject id, once every subject and photo is found in the session.
std::map<std::string, CoachingChecklistReview>
matchChecklist(const ChecklistFile& file, const std::vector<ReviewFrame>& frames,
               const json::Source& source);

} // namespace dravik::coaching
