// SPDX-License-Identifier: Apache-2.0
#include "dravik/lean_analysis.h"
#include "lean/lean_rules.h"

#include <cmath>
#include <numbers>

namespace dravik {

namespace {

constexpr double degreesPerRadian = 180.0 / std::numbers::pi;

// Unlike validate, measuring never fails: anything unusable simply yields no angle.
bool measurable(const std::optional<LeanLine>& line) {
    return line && !lean::lineProblem(*line);
}

} // namespace

std::string_view LeanMeasurement::title() const {
    return basis == LeanBasis::sharedFeature ? "Wheel-to-feature orientation" : "2D wheel lean";
}

std::string_view LeanMeasurement::wording() const {
    return basis == LeanBasis::sharedFeature ? "wheel-to-feature orientation" : "2D wheel lean";
}

namespace LeanAnalysis {

double orientation(const LeanLine& line) {
    return std::atan2(-(line.b.y - line.a.y), line.b.x - line.a.x) * degreesPerRadian;
}

double wrap(double degrees) {
    double angle = std::fmod(degrees, 180.0); // exact, in (−180°, 180°)
    if (angle <= -90.0)
        angle += 180.0;
    else if (angle > 90.0)
        angle -= 180.0;
    return angle + 0.0; // no −0 to print as "-0"
}

double sensitivity(const LeanLine& line) {
    return std::atan(2.0 * line.uncertainty / lean::length(line)) * degreesPerRadian;
}

std::optional<LeanMeasurement> measure(const LeanAnnotation& annotation) {
    if (annotation.wheelNotObservable || !measurable(annotation.wheel) ||
        !measurable(annotation.reference))
        return std::nullopt;
    LeanMeasurement result;
    result.angle = wrap(90.0 + orientation(*annotation.reference) - orientation(*annotation.wheel));
    result.sensitivity = sensitivity(*annotation.wheel) + sensitivity(*annotation.reference);
    result.basis = annotation.basis;
    if (annotation.basis == LeanBasis::sharedFeature)
        result.featureID = lean::trimmed(annotation.featureID);
    result.reviewed = annotation.wheelReviewed && annotation.referenceReviewed;
    result.referenceOrientation = orientation(*annotation.reference);
    return result;
}

std::string_view limitations() {
    return "These angles are measured between lines drawn on a flat photo; they are not the "
           "motorcycle’s physical lean. A tilted camera turns the wheel and the reference alike, "
           "and can make a sloping edge look level or a level one look sloping; choose a "
           "reference for being level, not for looking level in the frame. "
           "Perspective changes how steep a wheel looks when the camera is high, low or close. "
           "An assumed-level horizon is only assumed: roads, kerbs and buildings are rarely "
           "truly level. A shared feature helps only when both photos show the same stationary "
           "points from comparable positions. The wheel’s heading matters: seen from the side, "
           "a leaned wheel looks nearly upright; seen from the front or behind, its lean shows "
           "in full. A still photo cannot show speed or corner radius, which together decide "
           "how much lean a corner needs. The intervals cover only how precisely the lines were "
           "placed, not these effects.";
}

} // namespace LeanAnalysis

} // namespace dravik
