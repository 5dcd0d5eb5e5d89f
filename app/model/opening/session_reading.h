// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"
#include "dravik/review.h"
#include "state/session_state.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace tessary {

// Everything a session needs before any of it is shown, read in the order opening checks it.
struct SessionRead {
    std::shared_ptr<const dravik::ReviewDocument> document;
    bool reopened = false; // the saved review beside the manifest was read
    std::filesystem::path reviewFile;
    std::string title; // the manifest's
    std::map<std::string, dravik::LeanAnnotation> proposals;
    std::string startFrameID;
    std::optional<std::string> startPairID;
    CompanionFiles companions;
};

// Builds the raw document, reopens the saved review when there is one, reads the lean proposals
// and the other companion files and chooses the frame to start on. Throws a DravikError for
// anything that must stop the session from opening.
SessionRead readSession(const std::filesystem::path& manifest,
                        const std::filesystem::path& results);

// What a companion file that exists but cannot be read does to the opening.
enum class CompanionFailure {
    refuseSession,     // the session does not open; its error says why
    showWithout,       // the session opens as if the file were absent
    withholdWithNotice // the session opens without it, and the panel says why
};

// The status line of a session just opened.
std::string openingMessage(const SessionRead& read);

// `message` with the manifest it names ("“session.json”") followed by the session it belongs to:
// "“session.json” of “Snetterton – Turn 1”". Every session has a "session.json", so the file name
// alone does not say which one failed. The title is the manifest's, or its folder's name when the
// manifest cannot be read.
std::string namingSession(std::string message, const std::filesystem::path& manifest);

} // namespace tessary
