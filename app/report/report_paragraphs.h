// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/review.h"
#include "exporting/report_source.h"

#include <string>
#include <vector>

namespace tessary {

// One paragraph of a page's feedback, in the words of the window's panels.
struct ReportParagraph {
    enum class Style { heading, subheading, body, secondary, warning };
    Style style = Style::body;
    std::string text;
};

// The feedback of a page in the panels' order: the pair's or the lone photo's coaching as the
// window shows it, then the wheel-lean evidence of the photos shown; each with its limitations.
std::vector<ReportParagraph> feedbackParagraphs(const ReportPage& page,
                                                const dravik::ReviewDocument& document);

} // namespace tessary
