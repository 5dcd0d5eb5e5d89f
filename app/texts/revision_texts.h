// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Where the review on screen stands, as the panels and the printed report say it.
namespace tessary::texts {

inline constexpr std::string_view savedLocally = "Saved locally";
inline constexpr std::string_view unsaved = "Unsaved";

// "Revision 7 · Saved locally"
inline std::string revisionStatus(std::int64_t revision, std::string_view state) {
    return "Revision " + std::to_string(revision) + " \u00b7 " + std::string(state);
}

} // namespace tessary::texts
