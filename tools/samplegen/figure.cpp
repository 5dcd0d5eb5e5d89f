// SPDX-License-Identifier: Apache-2.0
#include "figure.h"

#include "noise.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <string>
#include <utility>

namespace tessary::samplegen {

namespace {

// An outline in the motorcycle's side plane (x, z), each point with its half width across.
struct Station {
    double x, z, w;
};
using Outline = std::vector<Station>;

constexpr double tyreRadius = 0.30;
constexpr Vec3 rearAxle{-0.70, 0, tyreRadius};
constexpr Vec3 frontAxle{0.72, 0, tyreRadius};

// Light from high on the left, in view space (x right, y down, z towards the viewer).
const Vec3 light = normalized({-0.45, -0.75, 0.55});

Rgb lit(Rgb base, Vec3 normal, double gloss) {
    const double diffuse = std::max(0.0, dot(normal, light));
    const Vec3 halfway = normalized(light + Vec3{0, 0, 1});
    const double specular = gloss * std::pow(std::max(0.0, dot(normal, halfway)), 24);
    const auto k = static_cast<float>(0.42 + 0.6 * diffuse);
    return mix(scaled(base, std::min(k, 1.0f)), {1, 1, 1},
               static_cast<float>(std::min(specular, 0.85)));
}

struct Piece {
    double depth;
    std::function<void(Canvas&)> draw;
};

class Painter {
  public:
    Painter(const Camera& camera, std::uint64_t seed) : camera_(camera), grain_(seed) {}

    const Camera& camera() const { return camera_; }

    // Textured colour: fabric, paint or rubber all get some grain so nothing is flat.
    Rgb grainy(Rgb c, double x, double y, double amount, double size = 2.0) const {
        const double n = grain_.fractal(x / size, y / size, 2) - 0.5;
        return scaled(c, static_cast<float>(1 + amount * n));
    }

    // The side of the motorcycle facing the camera: +1 its left, -1 its right.
    double nearSide() const { return camera_.viewDirection({0, 1, 0}).z > 0 ? 1 : -1; }

    // A limb or tube: shaded as a cylinder across its axis.
    void tube(Canvas& canvas, Vec3 a3, Vec3 b3, double ra, double rb, Rgb base, double gloss,
              double texture = 0.12) const {
        const Vec2 a = camera_.project(a3), b = camera_.project(b3);
        const double dx = b.x - a.x, dy = b.y - a.y;
        const double len = std::max(1e-9, std::hypot(dx, dy));
        const double nx = -dy / len, ny = dx / len;
        const double pa = ra * camera_.scale(), pb = rb * camera_.scale();
        canvas.fill(capsule(a, b, pa, pb), [=, this](double x, double y) {
            const double t = std::clamp(((x - a.x) * dx + (y - a.y) * dy) / (len * len), 0.0, 1.0);
            const double r = pa + (pb - pa) * t;
            const double across = std::clamp(((x - a.x) * nx + (y - a.y) * ny) / r, -1.0, 1.0);
            const Vec3 normal{nx * across, ny * across, std::sqrt(1 - across * across)};
            return grainy(lit(base, normal, gloss), x, y, texture);
        });
    }

    void sphere(Canvas& canvas, Vec3 centre3, double radius, Rgb base, double gloss) const {
        sphere(canvas, centre3, radius, [=](Vec3) { return std::pair{base, gloss}; });
    }

    // A sphere whose surface colour and gloss depend on the view-space normal.
    void sphere(Canvas& canvas, Vec3 centre3, double radius,
                const std::function<std::pair<Rgb, double>(Vec3)>& surface) const {
        const Vec2 c = camera_.project(centre3);
        const double r = radius * camera_.scale();
        canvas.fill(ellipse(c, r, r), [&, c, r](double x, double y) {
            Vec3 n{(x - c.x) / r, (y - c.y) / r, 0};
            n.z = std::sqrt(std::max(0.0, 1 - n.x * n.x - n.y * n.y));
            n = normalized(n);
            const auto [colour, gloss] = surface(n);
            return grainy(lit(colour, n, gloss), x, y, 0.06);
        });
    }

    // The outline extruded sideways by its half widths: the faces towards the camera, each shaded
    // by its direction, with the near side panel shaded from top to bottom for some roundness.
    void solid(Canvas& canvas, const Outline& outline, double yCentre, Rgb base, double gloss,
               float opacity = 1.0f) const {
        double area = 0;
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const Station& a = outline[i];
            const Station& b = outline[(i + 1) % outline.size()];
            area += a.x * b.z - b.x * a.z;
        }
        const double outward = area > 0 ? 1 : -1;
        auto at = [&](std::size_t i, double side) {
            return Vec3{outline[i].x, yCentre + side * outline[i].w, outline[i].z};
        };
        std::vector<Polygon> walls;
        std::vector<std::pair<Polygon, Rgb>> shadedWalls;
        for (std::size_t i = 0; i < outline.size(); ++i) {
            const std::size_t j = (i + 1) % outline.size();
            Vec3 normal = cross(at(j, -1) - at(i, -1), at(i, 1) - at(i, -1));
            const Vec3 flat{(outline[j].z - outline[i].z) * outward, 0,
                            -(outline[j].x - outline[i].x) * outward};
            if (length(normal) < 1e-12)
                continue;
            if (dot(normal, flat) < 0)
                normal = normal * -1;
            normal = camera_.viewDirection(normalized(normal));
            if (normal.z <= 0)
                continue;
            Polygon quad{camera_.project(at(i, -1)), camera_.project(at(j, -1)),
                         camera_.project(at(j, 1)), camera_.project(at(i, 1))};
            walls.push_back(quad);
            shadedWalls.emplace_back(std::move(quad), lit(base, normal, gloss));
        }
        // One pass under the walls first, so that their shared edges leave no seams.
        if (!walls.empty())
            canvas.fill(
                walls,
                [=, this](double x, double y) { return grainy(scaled(base, 0.7f), x, y, 0.06); },
                opacity);
        for (const auto& wall : shadedWalls) {
            const Rgb colour = wall.second;
            canvas.fill(
                wall.first, [=, this](double x, double y) { return grainy(colour, x, y, 0.06); },
                opacity);
        }
        const double side = nearSide();
        Polygon cap;
        double low = 1e9, high = -1e9;
        for (std::size_t i = 0; i < outline.size(); ++i) {
            cap.push_back(camera_.project(at(i, side)));
            low = std::min(low, outline[i].z);
            high = std::max(high, outline[i].z);
        }
        const Rgb colour = lit(base, camera_.viewDirection({0, side, 0}), gloss * 0.5);
        const Vec2 bottom = camera_.project({0, yCentre, low});
        const Vec2 top = camera_.project({0, yCentre, high});
        const double gx = top.x - bottom.x, gy = top.y - bottom.y;
        const double gg = std::max(1e-9, gx * gx + gy * gy);
        canvas.fill(
            cap,
            [=, this](double x, double y) {
                const double t =
                    std::clamp(((x - bottom.x) * gx + (y - bottom.y) * gy) / gg, 0.0, 1.0);
                return grainy(scaled(colour, static_cast<float>(0.86 + 0.26 * t)), x, y, 0.06);
            },
            opacity);
    }

    // Paint on the near side panel at half width `w`: an outline in (x, z).
    Polygon onSide(const std::vector<Vec2>& outline, double w) const {
        Polygon polygon;
        for (const Vec2& p : outline)
            polygon.push_back(camera_.project({p.x, nearSide() * w, p.y}));
        return polygon;
    }

    // A circle in a plane y = const of the motorcycle's frame.
    Polygon circle(Vec3 centre, double radius, int segments = 64) const {
        Polygon polygon;
        for (int i = 0; i < segments; ++i) {
            const double t = 2 * std::numbers::pi * i / segments;
            polygon.push_back(
                camera_.project(centre + Vec3{radius * std::cos(t), 0, radius * std::sin(t)}));
        }
        return polygon;
    }

  private:
    const Camera& camera_;
    ValueNoise grain_;
};

Outline ring(double cx, double cz, double r, double w, int segments) {
    Outline outline;
    for (int i = 0; i < segments; ++i) {
        const double t = 2 * std::numbers::pi * i / segments;
        outline.push_back({cx + r * std::cos(t), cz + r * std::sin(t), w});
    }
    return outline;
}

Polygon reversed(Polygon p) {
    std::reverse(p.begin(), p.end());
    return p;
}

void drawWheel(Canvas& canvas, const Painter& paint, Vec3 axle, double halfWidth, bool front,
               const RiderLook& look, double spokeTurn) {
    paint.solid(canvas, ring(axle.x, axle.z, tyreRadius, halfWidth, 72), 0, rgb8(34, 34, 36), 0.15);
    const Camera& camera = paint.camera();
    const double side = paint.nearSide();
    const Vec3 hub = axle + Vec3{0, side * (halfWidth + 0.004), 0};
    const Rgb inner = rgb8(26, 26, 28);
    canvas.fill(paint.circle(hub, 0.215),
                [&](double x, double y) { return paint.grainy(inner, x, y, 0.3); });
    if (front) {
        const Rgb steel = rgb8(170, 172, 176);
        canvas.fill({paint.circle(hub, 0.16), reversed(paint.circle(hub, 0.105))},
                    [&](double x, double y) { return paint.grainy(steel, x, y, 0.25, 1.2); });
    }
    const Rgb rim = lit(look.rims, camera.viewDirection({0, side, 0}), 0.4);
    canvas.fill({paint.circle(hub, 0.215), reversed(paint.circle(hub, 0.19))},
                [&](double x, double y) { return paint.grainy(rim, x, y, 0.1); });
    for (int i = 0; i < 5; ++i) {
        const double t = spokeTurn + 2 * std::numbers::pi * i / 5;
        const Vec3 dir{std::cos(t), 0, std::sin(t)};
        paint.tube(canvas, hub + dir * 0.04, hub + dir * 0.2, 0.016, 0.011, look.rims, 0.4, 0.06);
    }
    paint.sphere(canvas, hub, 0.045, rgb8(120, 120, 124), 0.5);
}

// Seven-segment digits for the race number on the fairing.
void drawNumber(Canvas& canvas, const Painter& paint, int number, Vec2 centre, double height,
                double w) {
    static constexpr unsigned char segments[10] = {0x3f, 0x06, 0x5b, 0x4f, 0x66,
                                                   0x6d, 0x7d, 0x07, 0x7f, 0x6f};
    // Segment ends in a unit digit box (x 0..1 forward, y 0..2 up), segments a..g.
    static constexpr double ends[7][4] = {{0, 2, 1, 2}, {1, 2, 1, 1}, {1, 1, 1, 0}, {0, 0, 1, 0},
                                          {0, 0, 0, 1}, {0, 1, 0, 2}, {0, 1, 1, 1}};
    const std::string digits = std::to_string(number);
    const double unit = height / 2, advance = unit * 1.6;
    const double left = centre.x - (advance * static_cast<double>(digits.size()) - unit * 0.6) / 2;
    // Seen from its left, the motorcycle's front points left in the picture: mirror the digits
    // there so that they still read left to right.
    const double direction = paint.nearSide() > 0 ? -1 : 1;
    for (std::size_t d = 0; d < digits.size(); ++d) {
        const unsigned char on = segments[digits[d] - '0'];
        const double x0 = left + advance * static_cast<double>(d);
        for (int s = 0; s < 7; ++s) {
            if (!(on & (1 << s)))
                continue;
            auto place = [&](double u, double v) {
                const double x = centre.x + direction * (x0 + u * unit - centre.x);
                return Vec3{x, paint.nearSide() * (w + 0.002), centre.y - height / 2 + v * unit};
            };
            paint.tube(canvas, place(ends[s][0], ends[s][1]), place(ends[s][2], ends[s][3]), 0.011,
                       0.011, rgb8(20, 20, 22), 0.2, 0.05);
        }
    }
}

} // namespace

std::vector<Vec2> figureOutline(const Camera& camera, const RiderPose& pose) {
    std::vector<Vec2> points;
    for (const Vec3& joint : pose.joints)
        points.push_back(camera.project(joint));
    points.push_back(camera.project(pose.head + pose.headUp * 0.15));
    for (Vec3 axle : {rearAxle, frontAxle})
        for (int i = 0; i < 16; ++i) {
            const double t = 2 * std::numbers::pi * i / 16;
            points.push_back(
                camera.project(axle + Vec3{tyreRadius * std::cos(t), 0, tyreRadius * std::sin(t)}));
        }
    for (Vec3 p : {Vec3{-0.87, 0, 0.99}, Vec3{0.70, 0, 0.72}, Vec3{0.30, 0, 1.15}})
        points.push_back(camera.project(p));
    return points;
}

std::pair<Vec2, Vec2> frontWheelAxis(const Camera& camera) {
    return {camera.project(frontAxle - Vec3{0, 0, tyreRadius}),
            camera.project(frontAxle + Vec3{0, 0, tyreRadius})};
}

void drawFigure(Canvas& canvas, const Camera& camera, const RiderPose& pose, const RiderLook& look,
                int turn, double lean, std::uint64_t textureSeed) {
    const Painter paint(camera, textureSeed);
    const double s = turn;

    // The shadow falls under the mass, which sits to the inside of the contact patches.
    const Vec3 shadowCentre{-0.05, s * 0.55 * std::sin(lean), 0};
    for (int i = 0; i < 3; ++i) {
        Polygon shadow;
        for (int k = 0; k < 64; ++k) {
            const double t = 2 * std::numbers::pi * k / 64;
            const double grow = 1 + 0.08 * i;
            shadow.push_back(camera.projectWorld(
                shadowCentre + Vec3{1.05 * grow * std::cos(t), 0.38 * grow * std::sin(t), 0}));
        }
        canvas.fill(shadow, solid(rgb8(10, 10, 14)), 0.22f);
    }

    std::vector<Piece> pieces;
    auto add = [&](Vec3 anchor, std::function<void(Canvas&)> draw) {
        pieces.push_back({camera.depth(anchor), std::move(draw)});
    };
    // Parts tucked inside the bodywork go first whatever their depth.
    std::vector<std::function<void(Canvas&)>> inner;

    const double spokeTurn = static_cast<double>(textureSeed % 628) / 100.0;
    add(rearAxle, [&](Canvas& c) { drawWheel(c, paint, rearAxle, 0.09, false, look, spokeTurn); });
    add(frontAxle,
        [&](Canvas& c) { drawWheel(c, paint, frontAxle, 0.07, true, look, spokeTurn * 1.7); });
    for (double side : {-1.0, 1.0}) {
        add({-0.45, side * 0.12, 0.4}, [&, side](Canvas& c) {
            paint.solid(c,
                        {{-0.16, 0.50, 0.025},
                         {-0.72, 0.34, 0.02},
                         {-0.72, 0.26, 0.02},
                         {-0.16, 0.41, 0.025}},
                        side * 0.12, rgb8(60, 62, 66), 0.5);
        });
        add(frontAxle + Vec3{0, side * 0.1, 0}, [&, side](Canvas& c) {
            paint.tube(c, frontAxle + Vec3{0, side * 0.1, 0}, {0.60, side * 0.1, 0.66}, 0.035,
                       0.032, rgb8(200, 160, 60), 0.9, 0.05);
        });
        inner.push_back([&, side](Canvas& c) {
            paint.tube(c, {-0.28, side * 0.14, 0.46}, {-0.16, side * 0.26, 0.44}, 0.015, 0.015,
                       rgb8(150, 150, 150), 0.6);
        });
        add({0.45, side * 0.25, 0.93}, [&, side](Canvas& c) {
            paint.tube(c, {0.47, side * 0.10, 0.95}, {0.44, side * 0.34, 0.93}, 0.02, 0.02,
                       rgb8(25, 25, 25), 0.3);
        });
    }
    add({-0.50, -0.17, 0.55}, [&](Canvas& c) {
        paint.tube(c, {-0.30, -0.15, 0.42}, {-0.66, -0.19, 0.62}, 0.05, 0.058, rgb8(175, 178, 182),
                   1.0, 0.04);
    });
    add({0.05, 0, 0.70}, [&](Canvas& c) {
        const Outline body{{0.70, 0.72, 0.07},  {0.66, 0.88, 0.10},  {0.52, 1.00, 0.15},
                           {0.30, 1.04, 0.16},  {0.10, 1.06, 0.16},  {-0.12, 0.99, 0.14},
                           {-0.22, 0.92, 0.13}, {-0.46, 0.91, 0.12}, {-0.72, 0.99, 0.08},
                           {-0.87, 0.99, 0.05}, {-0.85, 0.93, 0.05}, {-0.56, 0.78, 0.09},
                           {-0.26, 0.64, 0.14}, {-0.10, 0.36, 0.12}, {0.30, 0.31, 0.12},
                           {0.50, 0.43, 0.17},  {0.63, 0.58, 0.14}};
        paint.solid(c, body, 0, look.bike, 0.9);
        const Rgb trim = look.bikeTrim;
        c.fill(paint.onSide({{0.60, 0.60},
                             {0.10, 0.47},
                             {-0.22, 0.66},
                             {-0.55, 0.82},
                             {-0.58, 0.87},
                             {-0.2, 0.73},
                             {0.10, 0.55},
                             {0.63, 0.68}},
                            0.17),
               [&](double x, double y) { return paint.grainy(trim, x, y, 0.06); });
        // Race number plate on the side of the fairing.
        Polygon plate;
        for (int k = 0; k < 40; ++k) {
            const double t = 2 * std::numbers::pi * k / 40;
            plate.push_back(camera.project(
                {0.30 + 0.13 * std::cos(t), paint.nearSide() * 0.171, 0.72 + 0.09 * std::sin(t)}));
        }
        c.fill(plate,
               [&](double x, double y) { return paint.grainy(rgb8(240, 240, 236), x, y, 0.05); });
        drawNumber(c, paint, look.raceNumber, {0.30, 0.72}, 0.11, 0.171);
        if (camera.viewDirection({1, 0, 0}).z > 0)
            for (double side : {-1.0, 1.0}) {
                Polygon lamp;
                for (int k = 0; k < 24; ++k) {
                    const double t = 2 * std::numbers::pi * k / 24;
                    lamp.push_back(camera.project({0.695 - 0.02 * std::sin(t),
                                                   side * 0.045 + 0.03 * std::cos(t),
                                                   0.80 + 0.025 * std::sin(t)}));
                }
                c.fill(lamp, [&](double x, double y) {
                    return paint.grainy(rgb8(235, 238, 240), x, y, 0.1);
                });
            }
        paint.solid(
            c,
            {{-0.20, 0.92, 0.12}, {-0.48, 0.905, 0.11}, {-0.48, 0.95, 0.11}, {-0.22, 0.98, 0.12}},
            0, rgb8(22, 22, 24), 0.2);
    });
    add({0.40, 0, 1.08}, [&](Canvas& c) {
        paint.solid(
            c, {{0.53, 1.00, 0.13}, {0.30, 1.15, 0.09}, {0.24, 1.13, 0.09}, {0.36, 1.02, 0.13}}, 0,
            rgb8(30, 38, 52), 0.45, 0.7f);
    });

    const auto& j = pose.joints;
    add((j[pelvis] + j[neck]) * 0.5, [&](Canvas& c) {
        paint.tube(c, j[leftHip], j[rightHip], 0.11, 0.11, look.leathers, 0.3);
        paint.tube(c, j[pelvis], j[neck], 0.17, 0.16, look.leathers, 0.3);
        paint.tube(c, j[leftShoulder], j[rightShoulder], 0.085, 0.085, look.leathers, 0.3);
        // The aerodynamic hump behind the neck.
        paint.tube(c, j[neck] + Vec3{-0.14, 0, 0.03}, j[neck] + Vec3{-0.03, 0, 0.06}, 0.09, 0.08,
                   look.stripe, 0.4);
    });
    add(pose.head, [&](Canvas& c) {
        const Vec3 facing = camera.viewDirection(pose.facing);
        const Vec3 up = camera.viewDirection(pose.headUp);
        const Vec3 left = camera.viewDirection(cross(pose.headUp, pose.facing));
        paint.sphere(c, pose.head, 0.15, [&](Vec3 n) {
            const double f = dot(n, facing), u = dot(n, up), l = dot(n, left);
            if (f > 0.5 && u > -0.25 && u < 0.38 && std::abs(l) < 0.75)
                return std::pair{look.visor, 1.6};
            if (std::abs(l) < 0.16 && u > -0.1 && f < 0.55)
                return std::pair{look.helmetStripe, 1.2};
            return std::pair{look.helmet, 1.2};
        });
    });
    for (double side : {1.0, -1.0}) {
        const bool l = side > 0;
        const Joint shoulder = l ? leftShoulder : rightShoulder, elbow = l ? leftElbow : rightElbow,
                    wrist = l ? leftWrist : rightWrist;
        add(j[elbow], [&, shoulder, elbow, wrist](Canvas& c) {
            paint.tube(c, j[shoulder], j[elbow], 0.07, 0.058, look.leathers, 0.3);
            paint.tube(c, j[elbow], j[wrist], 0.058, 0.046, look.leathers, 0.3);
            paint.tube(c, j[wrist] + Vec3{-0.02, 0, 0.01}, j[wrist] + Vec3{0.04, 0, -0.01}, 0.048,
                       0.042, look.gloves, 0.3);
        });
        const Joint hip = l ? leftHip : rightHip, knee = l ? leftKnee : rightKnee,
                    ankle = l ? leftAnkle : rightAnkle;
        const Vec3 toe = pose.toes[l ? 0 : 1];
        const bool inside = side == s;
        add(j[knee] * 0.7 + j[ankle] * 0.3, [&, hip, knee, ankle, toe, side, inside](Canvas& c) {
            paint.tube(c, j[hip], j[knee], 0.10, 0.072, look.leathers, 0.3);
            paint.tube(c, j[knee], j[ankle], 0.068, 0.052, look.leathers, 0.3);
            paint.tube(c, j[ankle] + Vec3{-0.03, 0, 0.06}, toe, 0.06, 0.042, look.boots, 0.6);
            if (inside)
                paint.sphere(c, j[knee] + Vec3{0.02, side * 0.065, -0.03}, 0.045,
                             rgb8(230, 230, 220), 0.4);
        });
    }

    for (const auto& draw : inner)
        draw(canvas);
    std::stable_sort(pieces.begin(), pieces.end(),
                     [](const Piece& a, const Piece& b) { return a.depth > b.depth; });
    for (const Piece& piece : pieces)
        piece.draw(canvas);
}

} // namespace tessary::samplegen
