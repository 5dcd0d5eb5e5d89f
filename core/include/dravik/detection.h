// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/geometry.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dravik {

struct JointResult {
    std::string name;
    double x = 0;
    double y = 0;
    double confidence = 0;
    bool operator==(const JointResult&) const = default;
};

// Someone or something the detector saw while looking for the rider, in source-photo pixels.
struct Candidate {
    std::string kind; // "person", "bicycle" or "motorcycle"
    PixelRect box;
    double score = 0; // 0...1
    // For a person: the candidate (a vehicle) they ride.
    std::optional<std::size_t> riding = {};
    bool operator==(const Candidate&) const = default;

    bool isPerson() const { return kind == "person"; }
};

// One detection pass on one rider photo. Points are in source-photo pixels.
struct DravikResult {
    std::string kind;   // "3D" or "2D"
    std::string status; // "needsReview" marks a result worth reviewing
    // Riders found: the people riding a vehicle, or the people when nobody rides one.
    std::int64_t count = 0;
    std::vector<JointResult> joints; // the rider's
    // Everyone and every vehicle seen, and which person the joints belong to. Results of older
    // detectors have none.
    std::vector<Candidate> candidates = {};
    std::optional<std::size_t> rider = {};
    bool operator==(const DravikResult&) const = default;

    // Worth seeding joints from: status "needsReview", exactly one rider, at least one joint.
    bool usable() const;
    std::optional<Point2> point(std::string_view joint) const;
};

// A wheel's axis as seen in a photo: two distinct points of the line through the wheel's plane.
struct WheelAxis {
    Point2 a;
    Point2 b;
    bool operator==(const WheelAxis&) const = default;
};

// What the app asks the batch program to detect again: a photo and a crop of it.
struct RetryRequest {
    std::string source; // absolute path of the photo
    std::string sourceHash;
    PixelRect crop;
    // The rider's wheel axis when the frame has one drawn or proposed: it tells the rider's lean.
    std::optional<WheelAxis> wheel = {};
    bool operator==(const RetryRequest&) const = default;

    std::string encode() const; // compact JSON
    static RetryRequest decode(std::string_view json, const std::string& fileLabel);
    static RetryRequest load(const std::filesystem::path& file);
};

// The batch program's answer to a RetryRequest: one result per detection pass.
struct DetectionRetry {
    std::optional<DravikResult> primary; // on the requested crop
    std::optional<DravikResult> refined; // on a tighter crop around the first pass's rider
    bool operator==(const DetectionRetry&) const = default;

    std::string encode() const;
    static DetectionRetry decode(std::string_view json, const std::string& fileLabel);
    static DetectionRetry load(const std::filesystem::path& file);
};

// The detector's results for one rider photo of a session.
struct RiderResults {
    std::string pairID;
    std::string riderID;
    std::string sourceHash;
    std::vector<DravikResult> results;
    bool operator==(const RiderResults&) const = default;
};

// "results.json": what the batch program found in every rider photo of a session.
struct ResultsFile {
    std::string detector;
    std::string detectorVersion;
    std::vector<RiderResults> riders;
    bool operator==(const ResultsFile&) const = default;

    std::string encode() const;
    static ResultsFile decode(std::string_view json, const std::string& fileLabel);
    static ResultsFile load(const std::filesystem::path& file);
};

} // namespace dravik
