#include "test_support.h"

#include "json/json_reader.h"
#include "json/json_writer.h"
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace dravik {
namespace {

const json::Source results{"results.json", "results file"};

std::string failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const DravikError& error) {
        return error.what();
    }
    return "(no failure)";
}

std::string nested(int depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonReader, RefusesHostileText) {
    struct Case {
        std::string text;
        std::string problem;
    };
    const Case cases[] = {
        {"{\"a\": 1,}", "it is not well-formed JSON"},
        {"", "it is not well-formed JSON"},
        {"{\"a\": \"\xff\"}", "it is not well-formed JSON"},
        {"{\"a\": 1e999}", "it holds a number too large to represent"},
        {"{\"a\": {\"b\": 1, \"b\": 2}}", "the key b appears twice in one object"},
        {"[{\"odd key\": 1, \"odd key\": 1}]", "the key [\"odd key\"] appears twice in one object"},
        {nested(65), "it is nested more than 64 levels deep"},
        {"{\"a\":" + nested(64) + "}", "it is nested more than 64 levels deep"},
    };
    for (const Case& c : cases) {
        std::string message = failureOf([&] { json::parse(c.text, results); });
        EXPECT_EQ(message.rfind("“results.json” is not a valid results file: " + c.problem, 0), 0u)
            << c.text.substr(0, 40) << " -> " << message;
    }
    EXPECT_NO_THROW(json::parse(nested(64), results));
    // Equal keys in different objects are not duplicates.
    EXPECT_NO_THROW(json::parse(R"({"a": {"k": 1}, "b": {"k": 2}, "k": [{"k": 3}]})", results));
}

TEST(JsonReader, NamesTheKeyPathInMessages) {
    json::Json root = json::parse(
        R"({"riders": [{}, {}, {"joints": [{"x": "12", "n": 1.5, "big": 9223372036854775808}]}]})",
        results);
    json::Node joint = json::Node(root, results)["riders"].items()[2]["joints"].items()[0];
    EXPECT_EQ(failureOf([&] { joint["x"].number(); }),
              "“results.json” is not a valid results file: riders[2].joints[0].x must be a finite "
              "number.");
    EXPECT_EQ(failureOf([&] { joint["y"]; }),
              "“results.json” is not a valid results file: riders[2].joints[0].y is missing.");
    EXPECT_EQ(failureOf([&] { joint["n"].integer(); }),
              "“results.json” is not a valid results file: riders[2].joints[0].n must be a whole "
              "number.");
    EXPECT_NE(failureOf([&] { joint["big"].integer(); }).find("is too large"), std::string::npos);
    EXPECT_EQ(joint["n"].number(), 1.5);
    EXPECT_FALSE(joint.find("absent").has_value());
    EXPECT_NE(
        failureOf([&] { joint["x"]["deeper"]; }).find("riders[2].joints[0].x must be an object"),
        std::string::npos);
}

TEST(JsonReader, ChecksFormatAndVersion) {
    auto check = [&](const std::string& text) {
        return failureOf([&] {
            json::Json root = json::parse(text, results);
            json::expectHeader(json::Node(root, results), "dravik-results", 1);
        });
    };
    EXPECT_EQ(check(R"({"format": "dravik-results", "version": 1})"), "(no failure)");
    EXPECT_EQ(check(R"({"format": "dravik-results", "version": 2})"),
              "“results.json” uses version 2 of the results file format, but only version 1 can be "
              "read.");
    EXPECT_NE(check(R"({"format": "dravik-session", "version": 1})").find("\"format\""),
              std::string::npos);
    EXPECT_NE(check(R"({"format": "dravik-results"})").find("version is missing"),
              std::string::npos);
    EXPECT_NE(check("[1]").find("the document must be a JSON object"), std::string::npos);
}

TEST(JsonReader, ReadsFilesUpToTheSizeLimit) {
    test::TempDir dir;
    EXPECT_EQ(failureOf([&] { json::readFile(dir / "results.json", results); }),
              "“results.json” could not be read: no such file or directory.");

    std::string text(json::maxFileBytes, ' ');
    test::writeText(dir / "big.json", text);
    EXPECT_EQ(json::readFile(dir / "big.json", results).size(), json::maxFileBytes);
    test::writeText(dir / "big.json", text + " ");
    EXPECT_EQ(failureOf([&] { json::readFile(dir / "big.json", results); }),
              "“results.json” is too large to be a results file (over 32 MiB).");
}

TEST(JsonWriter, RefusesWhatCannotBeReadBack) {
    json::Json value = {{"frames", {{{"x", 1.0}}, {{"x", std::nan("")}}}}};
    EXPECT_EQ(failureOf([&] { json::dump(value, "review document"); }),
              "The review document cannot be written: frames[1].x is not a finite number.");
    value["frames"][1]["x"] = std::numeric_limits<double>::infinity();
    EXPECT_THROW(json::dump(value, "review document"), DravikError);
    value["frames"][1]["x"] = "\xc3";
    EXPECT_EQ(failureOf([&] { json::dump(value, "review document"); }),
              "The review document cannot be written: it holds text that is not valid UTF-8.");

    // Doubles survive a round trip bit for bit.
    json::Json exact = {{"x", 0.1 + 0.2}, {"y", 1e-300}, {"z", 1234.5678901234567}};
    EXPECT_EQ(json::parse(json::dump(exact, "test", json::Layout::compact), results), exact);
}

} // namespace
} // namespace dravik
