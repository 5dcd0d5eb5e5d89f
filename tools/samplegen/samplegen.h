// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace tessary::samplegen {

struct Options {
    int photos = 3;          // rider photos
    double megapixels = 1.0; // per photo
    unsigned seed = 1;
    bool bundled = false; // the committed sample: one pair (rider + reference rider) and one
                          // unpaired rider photo
    int jpegQuality = 85;
};

// Writes the photos, "session.json" and "results.json" into `folder` (created if missing).
//
// Bundled: three 1200×800 photos (`photos` and `megapixels` are ignored): pair "turn-3" with
// the subject "Alex" and the reference rider "Sam" at one left-hand corner, and pair "turn-5"
// with Alex alone. Every panel is the whole photo.
//
// Otherwise: `photos` unpaired subject photos "photo-001.jpg"… (pairs "photo-001"…, rider
// "rider"), each at its own corner, each with a centred panel of about 60 % of the photo.
//
// Every rider gets a "3D" and a "2D" result: the drawn skeleton with a few pixels of noise.
// The same options always give the same bytes.
void writeSession(const std::filesystem::path& folder, const Options& options);

// A session of `photos` rider photos in `folder`, made of copies of the photos of the session in
// `source`, taken in turn: each copy a file of its own under its own name, with the original's
// detections. For sessions larger than it is worth generating. `alter`, when given, may change a
// copy's bytes (the copy's index from 0) before they are written and hashed.
using AlterCopy = std::function<void(int index, std::string& bytes)>;
void writeCopiedSession(const std::filesystem::path& source, const std::filesystem::path& folder,
                        int photos, const AlterCopy& alter = {});

// Photo size for a pixel budget, at 3:2.
dravik::ImageSize photoSize(double megapixels);

// What the bundled sample leaves for a reviewer to catch: one joint the detector missed and
// one it barely saw.
inline constexpr std::string_view bundledMissingFrame = "turn-3/sam";
inline constexpr std::string_view bundledMissingKind = "2D";
inline constexpr std::string_view bundledMissingJoint = "left_ankle";
inline constexpr std::string_view bundledDoubtfulFrame = "turn-3/alex";
inline constexpr std::string_view bundledDoubtfulKind = "3D";
inline constexpr std::string_view bundledDoubtfulJoint = "left_wrist";
inline constexpr double bundledDoubtfulConfidence = 0.12;

} // namespace tessary::samplegen
