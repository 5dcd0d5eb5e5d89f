// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/error.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace dravik::json {

using Json = nlohmann::ordered_json;

inline constexpr std::size_t maxFileBytes = 32u << 20; // 32 MiB
inline constexpr int maxDepth = 64;                    // nested arrays and objects

// Which file is being read, for messages: “results.json” is not a valid results file: ...
struct Source {
    std::string label; // the file name as the user knows it
    std::string kind;  // "results file", "session manifest", ...
    // Set when checking a value about to be written: messages then say it cannot be written.
    bool writing = false;
};

// The file name shown in messages for a path.
std::string fileLabel(const std::filesystem::path& file);

// “label” between typographic quotes. Call it qualified: unqualified, ADL prefers std::quoted.
std::string quoted(std::string_view label);

// Another sentence quoted after a colon: lower-case first letter, no final stop.
std::string clause(std::string sentence);

// The whole regular file (readWholeFile); refuses files larger than maxFileBytes.
std::string readFile(const std::filesystem::path& file, const Source& source);

// Parses hostile text: refuses malformed JSON, invalid UTF-8, nesting deeper than maxDepth,
// duplicate keys in an object and numbers too large to represent.
Json parse(std::string_view text, const Source& source);

// The sentence for a problem found in a file: “label” is not a valid kind: problem.
[[noreturn]] void fail(const Source& source, std::string_view problem);

// A value inside a parsed document, with its key path for messages (riders[2].joints[0].x).
// Borrows the value and the source: both must outlive the node.
class Node {
  public:
    Node(const Json& value, const Source& source, std::string path = {});

    const Json& json() const { return *value_; }
    const Source& source() const { return *source_; }
    const std::string& path() const { return path_; }

    bool isNull() const { return value_->is_null(); }
    bool isObject() const { return value_->is_object(); }

    // Required member of an object; fails when this is not an object or the key is missing.
    Node operator[](std::string_view key) const;
    // Optional member: none when missing or null.
    std::optional<Node> find(std::string_view key) const;
    bool has(std::string_view key) const { return find(key).has_value(); }

    std::vector<Node> items() const;                           // must be an array
    std::vector<std::pair<std::string, Node>> members() const; // must be an object

    std::string string() const;         // any string
    std::string nonEmptyString() const; // a string with at least one character
    double number() const;              // a finite number
    std::int64_t integer() const;       // a whole number that fits 64 bits
    bool boolean() const;

    // Fails with "<path> <problem>", e.g. node.fail("must not be negative").
    [[noreturn]] void fail(std::string_view problem) const;
    // Fails about a member of this object, present or not: "<path>.<key> <problem>".
    [[noreturn]] void failMember(std::string_view key, std::string_view problem) const;

  private:
    Node child(std::string path, const Json& value) const { return Node(value, *source_, path); }

    const Json* value_;
    const Source* source_;
    std::string path_;
};

// Checks the "format" and "version" keys of a document's root object.
void expectHeader(const Node& root, std::string_view format, std::int64_t version);

} // namespace dravik::json
