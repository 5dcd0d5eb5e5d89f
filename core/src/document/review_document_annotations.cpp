// SPDX-License-Identifier: Apache-2.0
#include "dravik/review.h"

namespace dravik {

namespace {

template <class Value>
const Value* find(const std::map<std::string, Value>& values, std::string_view key) {
    auto it = values.find(std::string(key));
    return it == values.end() ? nullptr : &it->second;
}

template <class Value>
void store(std::map<std::string, Value>& values, const std::string& key,
           const std::optional<Value>& value) {
    if (value)
        values.insert_or_assign(key, *value);
    else
        values.erase(key);
}

} // namespace

const LeanAnnotation* ReviewDocument::leanAnnotation(std::string_view frameID) const {
    return find(leanAnnotations_, frameID);
}

void ReviewDocument::setLeanAnnotation(const std::string& frameID,
                                       const std::optional<LeanAnnotation>& annotation) {
    requireRaisable();
    store(leanAnnotations_, frameID, annotation);
    ++revision_;
}

const PairContext* ReviewDocument::pairContext(std::string_view pairID) const {
    return find(pairContexts_, pairID);
}

void ReviewDocument::setPairContext(const std::string& pairID,
                                    const std::optional<PairContext>& context) {
    requireRaisable();
    store(pairContexts_, pairID, context);
    ++revision_;
}

const LeanPairContext* ReviewDocument::leanPairContext(std::string_view pairID) const {
    return find(leanPairContexts_, pairID);
}

void ReviewDocument::setLeanPairContext(const std::string& pairID,
                                        const std::optional<LeanPairContext>& context) {
    requireRaisable();
    store(leanPairContexts_, pairID, context);
    ++revision_;
}

} // namespace dravik
