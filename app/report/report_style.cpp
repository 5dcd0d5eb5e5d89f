// SPDX-License-Identifier: Apache-2.0
#include "report_style.h"

#include <QFontDatabase>

namespace tessary::report_style {

QFont font(int points, bool bold) {
    QFont chosen = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
    // Pages are drawn in points, so a pixel of the font is a point on paper. Unhinted: glyphs are
    // placed as designed, not snapped to a grid of whole points. Without ligatures, so that a
    // reader's search or copy finds "ff" as two letters.
    chosen.setPixelSize(points);
    chosen.setHintingPreference(QFont::PreferNoHinting);
    chosen.setStyleStrategy(QFont::PreferNoShaping);
    chosen.setBold(bold);
    return chosen;
}

QFont paragraphFont(ReportParagraph::Style style) {
    switch (style) {
    case ReportParagraph::Style::heading:
        return font(10, true);
    case ReportParagraph::Style::subheading:
        return font(8, true);
    case ReportParagraph::Style::secondary:
        return font(7);
    case ReportParagraph::Style::body:
    case ReportParagraph::Style::warning:
        break;
    }
    return font(8);
}

QColor paragraphColour(ReportParagraph::Style style) {
    switch (style) {
    case ReportParagraph::Style::secondary:
        return secondaryText;
    case ReportParagraph::Style::warning:
        return {200, 100, 0};
    case ReportParagraph::Style::heading:
    case ReportParagraph::Style::subheading:
    case ReportParagraph::Style::body:
        break;
    }
    return Qt::black;
}

double spaceBefore(ReportParagraph::Style style) {
    switch (style) {
    case ReportParagraph::Style::heading:
        return 7;
    case ReportParagraph::Style::subheading:
        return 4;
    case ReportParagraph::Style::body:
    case ReportParagraph::Style::secondary:
    case ReportParagraph::Style::warning:
        break;
    }
    return 2;
}

} // namespace tessary::report_style
