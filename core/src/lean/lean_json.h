// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/lean.h"

#include "json/json_reader.h"

namespace dravik::json {

// Strict readers: every key required (lines and the approval digest may be null), no unknown
// keys, finite numbers, known basis, and the frame-free rules of LeanAnnotation::validate.

// {"a": {"x", "y"}, "b": {"x", "y"}, "uncertainty"}
LeanLine readLeanLine(const Node& node);
Json write(const LeanLine& line);

// {"frameID", "sourceHash", "wheel", "wheelReviewed", "wheelNotObservable", "reference",
//  "referenceReviewed", "basis", "featureID", "provenance"}
LeanAnnotation readLeanAnnotation(const Node& node);
Json write(const LeanAnnotation& annotation);

// {"pairID", "sameWheelCue", "cameraViewsComparable", "wheelHeadingsComparable",
//  "referenceComparable", "cameraRollComparable", "similarSpeed", "approvalDigest"}
LeanPairContext readLeanPairContext(const Node& node);
Json write(const LeanPairContext& context);

} // namespace dravik::json
