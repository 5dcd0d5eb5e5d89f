// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "report_paragraphs.h"

#include <QColor>
#include <QFont>

// The printed page's measures and type, in points (1/72 inch).
namespace tessary::report_style {

inline constexpr double margin = 36;
inline constexpr double columnGap = 18;
inline constexpr double photoGap = 12;
inline constexpr double footerHeight = 18;
// The canvas's markers and labels are sized for a photo about this many points wide on screen;
// a printed photo is drawn at that size and scaled to its place, so it looks as on screen.
inline constexpr double overlayWidth = 460;

QFont font(int points, bool bold = false);
QFont paragraphFont(ReportParagraph::Style style);
QColor paragraphColour(ReportParagraph::Style style);
double spaceBefore(ReportParagraph::Style style);
inline const QColor secondaryText{96, 96, 96};

} // namespace tessary::report_style
