// SPDX-License-Identifier: Apache-2.0
#include "lean/lean_json.h"

#include "lean/lean_rules.h"

#include "json/geometry_codec.h"
#include <algorithm>
#include <initializer_list>

namespace dravik::json {

namespace {

// A misspelt key would otherwise pass unnoticed as an absent one.
void onlyKeys(const Node& node, std::initializer_list<std::string_view> keys) {
    for (const auto& [key, member] : node.members())
        if (std::find(keys.begin(), keys.end(), key) == keys.end())
            member.fail("is not a known key");
}

// A key that must be present but may hold null.
std::optional<Node> nullable(const Node& node, std::string_view key) {
    if (!node.json().contains(std::string(key)))
        node[key]; // fails, naming the missing key
    return node.find(key);
}

Point2 readStrictPoint(const Node& node) {
    onlyKeys(node, {"x", "y"});
    return readPoint(node);
}

std::string readText(const Node& node) {
    std::string text = node.string();
    if (auto problem = lean::textProblem(text))
        node.fail(*problem);
    return text;
}

Json writeNullable(const std::optional<LeanLine>& line) {
    return line ? write(*line) : Json(nullptr);
}

} // namespace

LeanLine readLeanLine(const Node& node) {
    onlyKeys(node, {"a", "b", "uncertainty"});
    LeanLine line{readStrictPoint(node["a"]), readStrictPoint(node["b"]),
                  node["uncertainty"].number()};
    if (auto problem = lean::lineProblem(line))
        node.fail(*problem);
    return line;
}

Json write(const LeanLine& line) {
    return Json{{"a", write(line.a)}, {"b", write(line.b)}, {"uncertainty", line.uncertainty}};
}

LeanAnnotation readLeanAnnotation(const Node& node) {
    onlyKeys(node, {"frameID", "sourceHash", "wheel", "wheelReviewed", "wheelNotObservable",
                    "reference", "referenceReviewed", "basis", "featureID", "provenance"});
    LeanAnnotation annotation;
    annotation.frameID = node["frameID"].nonEmptyString();
    annotation.sourceHash = readContentHash(node["sourceHash"]);
    if (auto wheel = nullable(node, "wheel"))
        annotation.wheel = readLeanLine(*wheel);
    annotation.wheelReviewed = node["wheelReviewed"].boolean();
    annotation.wheelNotObservable = node["wheelNotObservable"].boolean();
    if (auto reference = nullable(node, "reference"))
        annotation.reference = readLeanLine(*reference);
    annotation.referenceReviewed = node["referenceReviewed"].boolean();
    Node basis = node["basis"];
    auto known = leanBasis(basis.string());
    if (!known)
        basis.fail("must be \"assumedLevel\" or \"sharedFeature\"");
    annotation.basis = *known;
    annotation.featureID = readText(node["featureID"]);
    Node provenance = node["provenance"];
    provenance.nonEmptyString();
    annotation.provenance = readText(provenance);
    if (auto problem = lean::flagProblem(annotation))
        node.fail(*problem);
    return annotation;
}

Json write(const LeanAnnotation& annotation) {
    return Json{{"frameID", annotation.frameID},
                {"sourceHash", annotation.sourceHash},
                {"wheel", writeNullable(annotation.wheel)},
                {"wheelReviewed", annotation.wheelReviewed},
                {"wheelNotObservable", annotation.wheelNotObservable},
                {"reference", writeNullable(annotation.reference)},
                {"referenceReviewed", annotation.referenceReviewed},
                {"basis", rawValue(annotation.basis)},
                {"featureID", annotation.featureID},
                {"provenance", annotation.provenance}};
}

LeanPairContext readLeanPairContext(const Node& node) {
    onlyKeys(node,
             {"pairID", "sameWheelCue", "cameraViewsComparable", "wheelHeadingsComparable",
              "referenceComparable", "cameraRollComparable", "similarSpeed", "approvalDigest"});
    LeanPairContext context;
    context.pairID = node["pairID"].nonEmptyString();
    context.sameWheelCue = node["sameWheelCue"].boolean();
    context.cameraViewsComparable = node["cameraViewsComparable"].boolean();
    context.wheelHeadingsComparable = node["wheelHeadingsComparable"].boolean();
    context.referenceComparable = node["referenceComparable"].boolean();
    context.cameraRollComparable = node["cameraRollComparable"].boolean();
    context.similarSpeed = node["similarSpeed"].boolean();
    if (auto digest = nullable(node, "approvalDigest"))
        context.approvalDigest = readContentHash(*digest);
    return context;
}

Json write(const LeanPairContext& context) {
    return Json{
        {"pairID", context.pairID},
        {"sameWheelCue", context.sameWheelCue},
        {"cameraViewsComparable", context.cameraViewsComparable},
        {"wheelHeadingsComparable", context.wheelHeadingsComparable},
        {"referenceComparable", context.referenceComparable},
        {"cameraRollComparable", context.cameraRollComparable},
        {"similarSpeed", context.similarSpeed},
        {"approvalDigest", context.approvalDigest ? Json(*context.approvalDigest) : Json(nullptr)}};
}

} // namespace dravik::json
