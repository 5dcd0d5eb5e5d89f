// SPDX-License-Identifier: Apache-2.0
#include "scene.h"

#include "camera.h"
#include "figure.h"
#include "track.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessary::samplegen {

namespace {

template <typename T, std::size_t N> const T& pick(Random& random, const T (&options)[N]) {
    return options[static_cast<std::size_t>(random.index(static_cast<int>(N)))];
}

Rgb jitter(Random& random, Rgb c, float amount) {
    auto j = [&](float v) {
        return std::clamp(v + static_cast<float>(random.uniform(-amount, amount)), 0.0f, 1.0f);
    };
    return {j(c.r), j(c.g), j(c.b)};
}

Camera cameraFor(const PhotoScene& scene) {
    const CornerLook& corner = scene.corner;
    const double side = corner.fromOutside ? corner.turn : -corner.turn;
    const double azimuth = std::atan2(side * std::sin(corner.viewYaw), -std::cos(corner.viewYaw));
    return Camera(azimuth, corner.pitch, rollFor(corner.turn, scene.lean));
}

} // namespace

CornerLook randomCorner(Random& random) {
    static const Rgb skyTops[] = {rgb8(64, 118, 190), rgb8(92, 136, 188), rgb8(120, 140, 160)};
    static const Rgb treeGreens[] = {rgb8(48, 78, 42), rgb8(58, 84, 50), rgb8(40, 66, 48)};
    static const Rgb kerbs[] = {rgb8(200, 36, 36), rgb8(206, 52, 40), rgb8(40, 90, 170),
                                rgb8(46, 140, 70)};
    static const Rgb boardColours[] = {rgb8(30, 60, 150),   rgb8(200, 30, 40), rgb8(240, 190, 30),
                                       rgb8(240, 240, 235), rgb8(20, 120, 70), rgb8(230, 110, 20),
                                       rgb8(25, 25, 30)};
    CornerLook c;
    c.turn = random.chance(0.5) ? 1 : -1;
    c.fromOutside = random.chance(0.6);
    c.viewYaw = random.uniform(0.6, 1.0);
    c.pitch = random.uniform(0.10, 0.20);
    c.kerbGap = random.uniform(0.12, 0.2);
    c.kerbSlope = random.uniform(-0.25, 0.25);
    c.kerbBend = random.uniform(0.1, 0.4) * (random.chance(0.5) ? 1 : -1);
    c.horizonGap = random.uniform(0.08, 0.14);
    c.skyTop = jitter(random, pick(random, skyTops), 0.03f);
    c.skyLow = mix(c.skyTop, rgb8(225, 232, 240), 0.7f);
    c.trees = jitter(random, pick(random, treeGreens), 0.02f);
    c.grass = jitter(random, rgb8(86, 128, 58), 0.04f);
    const float grey = static_cast<float>(random.uniform(0.36, 0.46));
    c.asphalt = {grey, grey, grey * 1.03f};
    c.kerb = pick(random, kerbs);
    for (Rgb& board : c.boards)
        board = pick(random, boardColours);
    c.textureSeed = random.next();
    return c;
}

RiderLook randomRider(Random& random) {
    static const Rgb suits[] = {rgb8(20, 20, 24),  rgb8(235, 235, 232), rgb8(190, 30, 36),
                                rgb8(30, 70, 170), rgb8(240, 200, 30),  rgb8(30, 130, 80),
                                rgb8(230, 110, 20)};
    static const Rgb helmets[] = {rgb8(240, 240, 240), rgb8(220, 40, 40), rgb8(250, 210, 20),
                                  rgb8(40, 90, 200),   rgb8(30, 30, 34),  rgb8(120, 200, 60)};
    static const Rgb visors[] = {rgb8(30, 34, 42), rgb8(40, 70, 130), rgb8(150, 110, 40)};
    static const Rgb bikes[] = {rgb8(200, 24, 30),   rgb8(30, 60, 160),  rgb8(40, 150, 60),
                                rgb8(240, 240, 238), rgb8(240, 130, 20), rgb8(24, 24, 28)};
    static const Rgb rims[] = {rgb8(200, 160, 40), rgb8(30, 30, 30), rgb8(190, 30, 30),
                               rgb8(170, 170, 176)};
    RiderLook r;
    r.leathers = jitter(random, pick(random, suits), 0.03f);
    do
        r.stripe = pick(random, suits);
    while (std::abs(r.stripe.r - r.leathers.r) + std::abs(r.stripe.g - r.leathers.g) +
               std::abs(r.stripe.b - r.leathers.b) <
           0.4f);
    r.helmet = pick(random, helmets);
    r.helmetStripe = pick(random, suits);
    r.visor = pick(random, visors);
    // The rider must stand out from the motorcycle.
    do
        r.bike = jitter(random, pick(random, bikes), 0.03f);
    while (std::abs(r.bike.r - r.leathers.r) + std::abs(r.bike.g - r.leathers.g) +
               std::abs(r.bike.b - r.leathers.b) <
           0.4f);
    r.bikeTrim = random.chance(0.5) ? rgb8(240, 240, 238) : rgb8(24, 24, 28);
    r.rims = pick(random, rims);
    r.gloves = random.chance(0.6) ? rgb8(24, 24, 26) : r.leathers;
    r.boots = random.chance(0.6) ? rgb8(24, 24, 26) : rgb8(235, 235, 235);
    r.raceNumber = 2 + random.index(97);
    r.style = {random.uniform(0.3, 0.9), random.uniform(0.3, 0.9), random.uniform(0.4, 1.0),
               random.uniform(0.2, 0.8), random.uniform(0.3, 0.9)};
    return r;
}

PhotoScene randomMoment(const CornerLook& corner, const RiderLook& rider, Random& random) {
    PhotoScene scene;
    scene.corner = corner;
    scene.rider = rider;
    scene.lean = random.uniform(0.62, 0.92);
    scene.size = random.uniform(0.50, 0.58);
    scene.centreX = random.uniform(0.46, 0.54);
    scene.centreY = random.uniform(0.48, 0.54);
    scene.panBlur = random.uniform(0.0015, 0.005);
    scene.grainSeed = random.next();
    return scene;
}

RenderedPhoto renderPhoto(const PhotoScene& scene, int width, int height) {
    Camera camera = cameraFor(scene);
    const RiderPose pose = poseRider(scene.rider.style, scene.corner.turn, scene.lean);

    // Frame the shot: measure the outline at one pixel per metre, then scale and centre it.
    double minX = std::numeric_limits<double>::max(), maxX = -minX, minY = minX, maxY = -minX;
    for (const Vec2& p : figureOutline(camera, pose)) {
        minX = std::min(minX, p.x);
        maxX = std::max(maxX, p.x);
        minY = std::min(minY, p.y);
        maxY = std::max(maxY, p.y);
    }
    const double scale = scene.size * height / (maxY - minY);
    const Vec2 origin{scene.centreX * width - scale * (minX + maxX) / 2,
                      scene.centreY * height - scale * (minY + maxY) / 2};
    camera.frame(scale, origin);

    Canvas canvas(width, height);
    drawTrack(canvas, scene.corner, origin);
    canvas.blurRows(static_cast<int>(std::lround(scene.panBlur * width)));
    drawFigure(canvas, camera, pose, scene.rider, scene.corner.turn, scene.lean, scene.grainSeed);

    RenderedPhoto photo;
    photo.width = width;
    photo.height = height;
    photo.rgb = canvas.toRgb8(scene.grainSeed, 0.022f);
    double bx0 = width, by0 = height, bx1 = 0, by1 = 0;
    for (int i = 0; i < jointCount; ++i) {
        const Vec3 joint = pose.joints[static_cast<std::size_t>(i)];
        const Vec2 p = camera.project(joint);
        photo.joints[static_cast<std::size_t>(i)] = {p.x, p.y};
        // Face points are judged against the helmet's centre, the rest against the motorcycle.
        const bool face = i <= rightEar;
        const Vec3 reference = face ? pose.head : Vec3{joint.x, 0, joint.z};
        photo.farSide[static_cast<std::size_t>(i)] =
            camera.depth(joint) > camera.depth(reference) + (face ? 0.02 : 0.05);
        bx0 = std::min(bx0, p.x);
        by0 = std::min(by0, p.y);
        bx1 = std::max(bx1, p.x);
        by1 = std::max(by1, p.y);
    }
    photo.riderBox = {bx0, by0, bx1 - bx0, by1 - by0};
    const auto [contact, top] = frontWheelAxis(camera);
    photo.wheelContact = {contact.x, contact.y};
    photo.wheelTop = {top.x, top.y};
    return photo;
}

} // namespace tessary::samplegen
