// SPDX-License-Identifier: Apache-2.0
#include "canvas_fixture.h"
#include "canvas_palette.h"

#include <QImage>
#include <cmath>
#include <cstdlib>
#include <numbers>

namespace tessary::test {
namespace {

// How close any pixel on a circle comes to `colour`: an outline shows wherever anti-aliasing
// left one pixel fully covered.
int bestOnRing(const QImage& image, QPointF centre, double radius, QColor colour) {
    int best = 3 * 255;
    for (double r : {radius - 0.5, radius, radius + 0.5})
        for (int step = 0; step < 48; ++step) {
            const double angle = step * 2 * std::numbers::pi / 48;
            const QPoint at(static_cast<int>(std::floor(centre.x() + r * std::cos(angle))),
                            static_cast<int>(std::floor(centre.y() + r * std::sin(angle))));
            if (!image.rect().contains(at))
                continue;
            const QColor seen = image.pixelColor(at);
            best = std::min(best, std::abs(seen.red() - colour.red()) +
                                      std::abs(seen.green() - colour.green()) +
                                      std::abs(seen.blue() - colour.blue()));
        }
    return best;
}

TEST_F(CanvasTest, MarkersAndLeanLinesAreDrawnInTheirColours) {
    openWithCompanions();
    model.setShowMarkers(true);
    model.setSelected("nose");
    model.edit(displayed(alex3, "right_knee"), dravik::JointReviewState::uncertain,
               model.target(alex3, "right_knee"));
    model.edit(displayed(alex3, "left_hip"), dravik::JointReviewState::confirmedVisible,
               model.target(alex3, "left_hip"));
    Presentation whole = model.settings(alex3);
    whole.autoFrame = false; // the whole photo, so that every line and handle is in view
    model.setSettings(alex3, whole);
    auto shown = showFrame(alex3);
    const QImage image = shown->grab().toImage();
    if (const char* folder = std::getenv("TESSARY_SCREENSHOTS"))
        image.save(QString::fromUtf8(folder) + "/canvas-sample-session.jpg", "JPG", 85);

    JointCanvasView* canvas = shown->canvas();
    auto at = [&](QPointF onCanvas) { return canvas->mapTo(shown.get(), onCanvas); };
    auto ringOf = [&](const std::string& joint, double radius, QColor colour) {
        return bestOnRing(image, at(jointOn(*canvas, joint)), radius, colour);
    };
    EXPECT_LT(ringOf("nose", 5.0, palette::white), 40);        // selected: 10 points across
    EXPECT_LT(ringOf("right_knee", 4.0, palette::orange), 40); // uncertain
    EXPECT_LT(ringOf("left_hip", 4.0, palette::green), 40);    // reviewed
    EXPECT_LT(ringOf("left_ankle", 4.0, palette::cyan), 40);   // unreviewed
    // Handles are 16 points across: wheel yellow, reference cyan.
    const dravik::LeanAnnotation proposal = model.lean(alex3).value();
    EXPECT_LT(bestOnRing(image, at(viewOf(*canvas, proposal.wheel->b)), 8, palette::yellow), 40);
    EXPECT_LT(bestOnRing(image, at(viewOf(*canvas, proposal.reference->b)), 8, palette::cyan), 40);

    // Hidden markers let the photo show through; the lean lines stay.
    model.setShowMarkers(false);
    const QImage bare = shown->grab().toImage();
    EXPECT_GT(bestOnRing(bare, at(jointOn(*canvas, "right_knee")), 4, palette::orange), 40);
    EXPECT_LT(bestOnRing(bare, at(viewOf(*canvas, proposal.wheel->b)), 8, palette::yellow), 40);
}

} // namespace
} // namespace tessary::test
