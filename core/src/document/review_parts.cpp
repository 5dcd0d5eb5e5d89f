// SPDX-License-Identifier: Apache-2.0
#include "document/review_parts.h"

namespace dravik {

ReviewParts ReviewParts::of(const ReviewDocument& document) {
    return {document.identity(),     document.frames(),           document.leanAnnotations(),
            document.pairContexts(), document.leanPairContexts(), document.pairAssessments()};
}

ReviewDocument ReviewParts::assemble(std::int64_t revision) const {
    // Each store below counts one revision; starting that many lower ends at `revision`.
    const auto stores = static_cast<std::int64_t>(leanAnnotations.size() + pairContexts.size() +
                                                  leanPairContexts.size());
    ReviewDocument document(identity, frames, revision - stores);
    for (const auto& [id, annotation] : leanAnnotations)
        document.setLeanAnnotation(id, annotation);
    for (const auto& [id, context] : pairContexts)
        document.setPairContext(id, context);
    for (const auto& [id, context] : leanPairContexts)
        document.setLeanPairContext(id, context);
    document.setPairAssessments(pairAssessments);
    return document;
}

} // namespace dravik
