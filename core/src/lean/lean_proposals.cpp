// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "lean/lean_json.h"

#include "json/document_io.h"

namespace dravik {

namespace {

constexpr std::string_view format = "dravik-lean-proposals";
constexpr std::int64_t version = 1;
constexpr std::string_view kind = "lean proposals file";

// A machine's guess must never pass for a person's review.
LeanAnnotation readProposal(const json::Node& node) {
    LeanAnnotation proposal = json::readLeanAnnotation(node);
    if (proposal.wheelReviewed || proposal.referenceReviewed)
        node.fail("is a proposal and cannot be marked reviewed");
    if (proposal.provenance == reviewerProvenance)
        node["provenance"].fail("must name the analysis that proposed the lines, not \"" +
                                std::string(reviewerProvenance) + "\"");
    return proposal;
}

std::vector<LeanAnnotation> read(const json::Node& root) {
    json::expectHeader(root, format, version);
    for (const auto& [key, member] : root.members())
        if (key != "format" && key != "version" && key != "proposals")
            member.fail("is not a known key");
    std::vector<LeanAnnotation> proposals;
    for (const json::Node& item : root["proposals"].items())
        proposals.push_back(readProposal(item));
    return proposals;
}

} // namespace

std::vector<LeanAnnotation> loadLeanProposals(const std::filesystem::path& file) {
    return json::loadDocument(file, kind, read);
}

std::vector<LeanAnnotation> decodeLeanProposals(std::string_view text,
                                                const std::string& fileLabel) {
    return json::decodeDocument(text, fileLabel, kind, read);
}

std::string encodeLeanProposals(const std::vector<LeanAnnotation>& proposals) {
    json::Json root = json::header(format, version);
    json::Json items = json::Json::array();
    for (const LeanAnnotation& proposal : proposals)
        items.push_back(json::write(proposal));
    root["proposals"] = std::move(items);
    return json::encodeDocument(root, kind, json::Layout::pretty, read);
}

} // namespace dravik
