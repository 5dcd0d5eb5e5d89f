// SPDX-License-Identifier: Apache-2.0
#include "dravik/pairs.h"

#include <array>

namespace dravik {

namespace {

template <class Enum, std::size_t N>
std::optional<Enum> fromRaw(const Enum (&all)[N], std::string_view raw) {
    for (Enum value : all)
        if (rawValue(value) == raw)
            return value;
    return std::nullopt;
}

bool isInside(PairFeature feature) {
    return feature == PairFeature::insideElbow || feature == PairFeature::insideKnee;
}

bool isElbow(PairFeature feature) {
    return feature == PairFeature::insideElbow || feature == PairFeature::outsideElbow;
}

} // namespace

std::string_view rawValue(CornerDirection direction) {
    switch (direction) {
    case CornerDirection::unknown:
        return "Unknown";
    case CornerDirection::left:
        return "Left";
    case CornerDirection::right:
        return "Right";
    }
    return {};
}

std::optional<CornerDirection> cornerDirection(std::string_view raw) {
    return fromRaw(allCornerDirections, raw);
}

std::string_view label(PairFeature feature) {
    switch (feature) {
    case PairFeature::insideElbow:
        return "Inside elbow";
    case PairFeature::outsideElbow:
        return "Outside elbow";
    case PairFeature::insideKnee:
        return "Inside knee";
    case PairFeature::outsideKnee:
        return "Outside knee";
    }
    return {};
}

std::string_view rawValue(PairFeature feature) {
    switch (feature) {
    case PairFeature::insideElbow:
        return "insideElbow";
    case PairFeature::outsideElbow:
        return "outsideElbow";
    case PairFeature::insideKnee:
        return "insideKnee";
    case PairFeature::outsideKnee:
        return "outsideKnee";
    }
    return {};
}

std::optional<PairFeature> pairFeature(std::string_view raw) {
    return fromRaw(allPairFeatures, raw);
}

std::vector<std::string> joints(PairFeature feature, CornerDirection direction) {
    if (direction == CornerDirection::unknown)
        return {};
    // In a left turn the left side of the body is the inside.
    bool left = isInside(feature) == (direction == CornerDirection::left);
    std::string side = left ? "left_" : "right_";
    if (isElbow(feature))
        return {side + "shoulder", side + "elbow", side + "wrist"};
    return {side + "hip", side + "knee", side + "ankle"};
}

std::optional<std::string> role(PairFeature feature, CornerDirection direction) {
    if (direction == CornerDirection::unknown)
        return std::nullopt;
    return isInside(feature) ? "Inside" : "Outside";
}

std::string_view label(KneePlacement placement) {
    switch (placement) {
    case KneePlacement::cannotCompare:
        return "Cannot compare";
    case KneePlacement::similar:
        return "Similar";
    case KneePlacement::riderFurtherOut:
        return "Rider knee further out";
    case KneePlacement::riderCloserIn:
        return "Rider knee closer in";
    case KneePlacement::obscured:
        return "Obscured";
    }
    return {};
}

std::string_view rawValue(KneePlacement placement) {
    switch (placement) {
    case KneePlacement::cannotCompare:
        return "cannotCompare";
    case KneePlacement::similar:
        return "similar";
    case KneePlacement::riderFurtherOut:
        return "riderFurtherOut";
    case KneePlacement::riderCloserIn:
        return "riderCloserIn";
    case KneePlacement::obscured:
        return "obscured";
    }
    return {};
}

std::optional<KneePlacement> kneePlacement(std::string_view raw) {
    return fromRaw(allKneePlacements, raw);
}

std::string_view label(ViewComparability comparability) {
    switch (comparability) {
    case ViewComparability::unreviewed:
        return "Unreviewed";
    case ViewComparability::comparable:
        return "Comparable";
    case ViewComparability::notComparable:
        return "Not comparable";
    }
    return {};
}

std::string_view rawValue(ViewComparability comparability) {
    switch (comparability) {
    case ViewComparability::unreviewed:
        return "unreviewed";
    case ViewComparability::comparable:
        return "comparable";
    case ViewComparability::notComparable:
        return "notComparable";
    }
    return {};
}

std::optional<ViewComparability> viewComparability(std::string_view raw) {
    return fromRaw(allViewComparabilities, raw);
}

} // namespace dravik
