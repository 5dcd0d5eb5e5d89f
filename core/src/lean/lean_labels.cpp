// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean.h"

namespace dravik {

std::string_view label(LeanBasis basis) {
    switch (basis) {
    case LeanBasis::assumedLevel:
        return "Assumed-level horizon (proxy)";
    case LeanBasis::sharedFeature:
        return "Shared stationary feature";
    }
    return {};
}

std::string_view prefix(LeanBasis basis) {
    switch (basis) {
    case LeanBasis::assumedLevel:
        return "Proxy reference · ";
    case LeanBasis::sharedFeature:
        return "Shared feature · ";
    }
    return {};
}

std::string_view rawValue(LeanBasis basis) {
    switch (basis) {
    case LeanBasis::assumedLevel:
        return "assumedLevel";
    case LeanBasis::sharedFeature:
        return "sharedFeature";
    }
    return {};
}

std::optional<LeanBasis> leanBasis(std::string_view raw) {
    for (LeanBasis basis : allLeanBases)
        if (rawValue(basis) == raw)
            return basis;
    return std::nullopt;
}

std::string_view label(LeanHandle handle) {
    switch (handle) {
    case LeanHandle::wheelA:
        return "Wheel endpoint 1";
    case LeanHandle::wheelB:
        return "Wheel endpoint 2";
    case LeanHandle::referenceA:
        return "Reference endpoint 1";
    case LeanHandle::referenceB:
        return "Reference endpoint 2";
    }
    return {};
}

std::string_view rawValue(LeanHandle handle) {
    switch (handle) {
    case LeanHandle::wheelA:
        return "wheelA";
    case LeanHandle::wheelB:
        return "wheelB";
    case LeanHandle::referenceA:
        return "referenceA";
    case LeanHandle::referenceB:
        return "referenceB";
    }
    return {};
}

std::optional<LeanHandle> leanHandle(std::string_view raw) {
    for (LeanHandle handle : allLeanHandles)
        if (rawValue(handle) == raw)
            return handle;
    return std::nullopt;
}

} // namespace dravik
