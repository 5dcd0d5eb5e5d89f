// SPDX-License-Identifier: Apache-2.0
#include "json/json_reader.h"

#include "dravik/file_io.h"

#include <cmath>
#include <limits>
#include <set>

namespace dravik::json {

namespace {

constexpr std::size_t maxKeyInMessage = 40;

bool plainKey(std::string_view key) {
    if (key.empty() || key.size() > maxKeyInMessage)
        return false;
    for (char c : key) {
        bool ok = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_' || c == '-';
        if (!ok)
            return false;
    }
    return true;
}

// Keys come from the file: long or odd ones are shown escaped and shortened.
std::string keyPath(const std::string& parent, std::string_view key) {
    if (plainKey(key))
        return parent.empty() ? std::string(key) : parent + "." + std::string(key);
    std::string shown(key.substr(0, maxKeyInMessage));
    std::string escaped = Json(shown).dump(-1, ' ', true, Json::error_handler_t::replace);
    if (key.size() > maxKeyInMessage)
        escaped.insert(escaped.size() - 1, "…");
    return parent + "[" + escaped + "]";
}

// Thrown by the parse callback; turned into a sentence once parsing has stopped.
struct Refusal {
    std::string problem;
};

} // namespace

std::string fileLabel(const std::filesystem::path& file) {
    std::string name = file.filename().string();
    return name.empty() ? file.string() : name;
}

std::string clause(std::string sentence) {
    if (!sentence.empty() && sentence.back() == '.')
        sentence.pop_back();
    if (!sentence.empty() && sentence.front() >= 'A' && sentence.front() <= 'Z')
        sentence.front() = static_cast<char>(sentence.front() - 'A' + 'a');
    return sentence;
}

std::string quoted(std::string_view label) {
    return "“" + std::string(label) + "”";
}

void fail(const Source& source, std::string_view problem) {
    if (source.writing)
        throw DravikError("The " + source.kind + " cannot be written: " + std::string(problem) +
                          ".");
    throw DravikError(json::quoted(source.label) + " is not a valid " + source.kind + ": " +
                      std::string(problem) + ".");
}

std::string readFile(const std::filesystem::path& file, const Source& source) {
    return readWholeFile(file, source.kind, maxFileBytes).bytes;
}

Json parse(std::string_view text, const Source& source) {
    // One set of keys per open object; arrays hold no keys, so the innermost object owns a key.
    std::vector<std::set<std::string>> openObjects;
    auto check = [&](int depth, Json::parse_event_t event, Json& parsed) {
        switch (event) {
        case Json::parse_event_t::object_start:
        case Json::parse_event_t::array_start:
            if (depth >= maxDepth)
                throw Refusal{"it is nested more than " + std::to_string(maxDepth) +
                              " levels deep"};
            if (event == Json::parse_event_t::object_start)
                openObjects.emplace_back();
            break;
        case Json::parse_event_t::key: {
            const auto& key = parsed.get_ref<const std::string&>();
            if (!openObjects.back().insert(key).second)
                throw Refusal{"the key " + keyPath("", key) + " appears twice in one object"};
            break;
        }
        case Json::parse_event_t::object_end:
            openObjects.pop_back();
            break;
        default:
            break;
        }
        return true;
    };
    try {
        return Json::parse(text.begin(), text.end(), check, true, false);
    } catch (const Refusal& refusal) {
        fail(source, refusal.problem);
    } catch (const Json::out_of_range&) {
        fail(source, "it holds a number too large to represent");
    } catch (const Json::parse_error& error) {
        std::string problem = "it is not well-formed JSON";
        if (error.byte > 0)
            problem += " (near byte " + std::to_string(error.byte) + ")";
        fail(source, problem);
    } catch (const Json::exception&) {
        fail(source, "it is not well-formed JSON");
    }
}

Node::Node(const Json& value, const Source& source, std::string path)
    : value_(&value), source_(&source), path_(std::move(path)) {}

void Node::fail(std::string_view problem) const {
    if (path_.empty())
        json::fail(*source_, "the document " + std::string(problem));
    json::fail(*source_, path_ + " " + std::string(problem));
}

void Node::failMember(std::string_view key, std::string_view problem) const {
    json::fail(*source_, keyPath(path_, key) + " " + std::string(problem));
}

Node Node::operator[](std::string_view key) const {
    if (auto found = find(key))
        return *found;
    failMember(key, "is missing");
}

std::optional<Node> Node::find(std::string_view key) const {
    if (!value_->is_object())
        fail("must be an object");
    auto it = value_->find(std::string(key));
    if (it == value_->end() || it->is_null())
        return std::nullopt;
    return child(keyPath(path_, key), *it);
}

std::vector<Node> Node::items() const {
    if (!value_->is_array())
        fail("must be an array");
    std::vector<Node> out;
    out.reserve(value_->size());
    for (std::size_t i = 0; i < value_->size(); ++i)
        out.push_back(child(path_ + "[" + std::to_string(i) + "]", (*value_)[i]));
    return out;
}

std::vector<std::pair<std::string, Node>> Node::members() const {
    if (!value_->is_object())
        fail("must be an object");
    std::vector<std::pair<std::string, Node>> out;
    out.reserve(value_->size());
    for (const auto& [key, value] : value_->items())
        out.emplace_back(key, child(keyPath(path_, key), value));
    return out;
}

std::string Node::string() const {
    if (!value_->is_string())
        fail("must be a string");
    return value_->get<std::string>();
}

std::string Node::nonEmptyString() const {
    std::string text = string();
    if (text.empty())
        fail("must not be empty");
    return text;
}

double Node::number() const {
    if (!value_->is_number())
        fail("must be a finite number");
    double value = value_->get<double>();
    if (!std::isfinite(value))
        fail("must be a finite number");
    return value;
}

std::int64_t Node::integer() const {
    if (value_->is_number_unsigned()) {
        auto value = value_->get<std::uint64_t>();
        if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()))
            fail("is too large");
        return static_cast<std::int64_t>(value);
    }
    if (!value_->is_number_integer())
        fail("must be a whole number");
    return value_->get<std::int64_t>();
}

bool Node::boolean() const {
    if (!value_->is_boolean())
        fail("must be true or false");
    return value_->get<bool>();
}

void expectHeader(const Node& root, std::string_view format, std::int64_t version) {
    if (!root.isObject())
        root.fail("must be a JSON object");
    auto formatNode = root.find("format");
    if (!formatNode || !formatNode->json().is_string() || formatNode->json() != format)
        root.fail("must have \"format\": \"" + std::string(format) + "\"");
    auto versionNode = root["version"];
    std::int64_t found = versionNode.integer();
    if (found != version) {
        const Source& source = root.source();
        throw DravikError(json::quoted(source.label) + " uses version " + std::to_string(found) +
                          " of the " + source.kind + " format, but only version " +
                          std::to_string(version) + " can be read.");
    }
}

} // namespace dravik::json
