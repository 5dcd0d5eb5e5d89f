// SPDX-License-Identifier: Apache-2.0
#include "canvas_drawing.h"
#include "canvas_palette.h"
#include "dravik/joints.h"

#include <QFontDatabase>
#include <QPainter>
#include <QStaticText>
#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace tessary {

namespace {

constexpr double rawRadius = 5.0;
constexpr double largeMarker = 10.0;
constexpr double smallMarker = 8.0;
constexpr double boneWidth = 1.5;
constexpr double boneAlpha = 0.6;
constexpr double markerFillAlpha = 0.85;
constexpr double rawAlpha = 0.75;
// Two numbers closer than this, across or down, would overlap.
constexpr double labelClearance = 12.0;

QFont labelFont() {
    // A fixed-pitch face keeps every digit the same width, so numbers sit centred alike.
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPixelSize(10);
    font.setBold(true);
    return font;
}

// Laid-out joint numbers by position in jointNames, made once: laying out text is the dearest
// part of a redraw. Never destroyed, so that no font outlives the application at exit.
const QStaticText& label(std::size_t position) {
    static const auto* labels = [] {
        auto* made = new std::vector<QStaticText>;
        for (const std::string& joint : dravik::InspectionRenderer::jointNames()) {
            QStaticText text(QString::number(dravik::InspectionRenderer::jointID(joint).value()));
            text.setTextFormat(Qt::PlainText);
            text.setPerformanceHint(QStaticText::AggressiveCaching);
            text.prepare(QTransform(), labelFont());
            made->push_back(text);
        }
        return made;
    }();
    return labels->at(position);
}

QColor outlineFor(const dravik::ReviewFrame& frame, const std::string& joint, bool selected) {
    if (selected)
        return palette::white;
    auto edit = frame.edits.find(joint);
    if (edit == frame.edits.end())
        return palette::cyan;
    return edit->second.state == dravik::JointReviewState::uncertain ? palette::orange
                                                                     : palette::green;
}

} // namespace

void drawSkeleton(QPainter& painter, const dravik::ReviewFrame& frame, const SkeletonScene& scene,
                  double scale) {
    const auto& names = dravik::InspectionRenderer::jointNames();
    const dravik::PixelRect& panel = frame.panel;
    const auto& preview = scene.preview;

    std::map<std::string, dravik::Point2> shown;
    for (const std::string& joint : names)
        if (preview && preview->joint == joint)
            shown[joint] = preview->point;
        else if (auto point = frame.displayPoint(joint, scene.kind))
            shown[joint] = *point;

    painter.setBrush(Qt::NoBrush);
    if (scene.showRaw) {
        painter.setPen(QPen(palette::withAlpha(palette::orange, rawAlpha), 1.0));
        for (const std::string& joint : names)
            if (auto raw = frame.rawPoint(joint, scene.kind))
                painter.drawEllipse(viewPoint(*raw, panel, scale), rawRadius, rawRadius);
    }

    QPen solidBone(palette::withAlpha(palette::green, boneAlpha), boneWidth);
    QPen dashedBone(palette::withAlpha(palette::cyan, boneAlpha), boneWidth);
    // Dash lengths are in units of the pen width; a 4-point dash and a 4-point gap.
    dashedBone.setDashPattern({4.0 / boneWidth, 4.0 / boneWidth});
    for (const auto& [from, to] : dravik::InspectionRenderer::bones()) {
        auto a = shown.find(from);
        auto b = shown.find(to);
        if (a == shown.end() || b == shown.end())
            continue;
        const bool reviewed =
            frame.reviewedPoint(from) == a->second && frame.reviewedPoint(to) == b->second;
        painter.setPen(reviewed ? solidBone : dashedBone);
        painter.drawLine(viewPoint(a->second, panel, scale), viewPoint(b->second, panel, scale));
    }

    const std::set<std::string>& highlighted = scene.highlighted;
    std::vector<std::pair<std::size_t, QPointF>> markers;
    for (std::size_t id = 0; id < names.size(); ++id) {
        const std::string& joint = names[id];
        auto point = shown.find(joint);
        if (point == shown.end())
            continue;
        const bool selected = scene.selected == joint;
        const double diameter = selected || highlighted.count(joint) ? largeMarker : smallMarker;
        const QPointF centre = viewPoint(point->second, panel, scale);
        painter.setPen(QPen(outlineFor(frame, joint, selected), selected ? 2.5 : 1.5));
        painter.setBrush(palette::withAlpha(palette::black, markerFillAlpha));
        painter.drawEllipse(centre, diameter / 2, diameter / 2);
        markers.emplace_back(id, centre);
    }
    painter.setBrush(Qt::NoBrush);

    // Numbers that would sit on each other are unreadable: only the first of a crowd is written.
    std::stable_partition(markers.begin(), markers.end(), [&](const auto& marker) {
        return names[marker.first] == scene.selected;
    });
    std::vector<QPointF> numbered;
    painter.setPen(palette::white);
    for (const auto& [id, centre] : markers) {
        const bool crowded =
            std::any_of(numbered.begin(), numbered.end(), [&](const QPointF& other) {
                return std::abs(other.x() - centre.x()) < labelClearance &&
                       std::abs(other.y() - centre.y()) < labelClearance;
            });
        if (crowded)
            continue;
        const QStaticText& number = label(id);
        painter.drawStaticText(
            centre - QPointF(number.size().width() / 2, number.size().height() / 2), number);
        numbered.push_back(centre);
    }
}

void drawPreviewNotice(QPainter& painter, const dravik::ReviewFrame& frame,
                       const JointPreview& preview, double scale, const QRectF& shown) {
    // Nothing is saved until the button comes up; the dragged joint says so.
    drawTag(painter, viewPoint(preview.point, frame.panel, scale) + QPointF(12, 8),
            QStringLiteral("Preview · release to save"), palette::white, tagFont(11, false), shown);
}

void drawCanvasNote(QPainter& painter, const QRectF& shown, const QString& text) {
    drawTag(painter, shown.topLeft() + QPointF(8, 8), text, palette::white, tagFont(11, false),
            shown);
}

} // namespace tessary
