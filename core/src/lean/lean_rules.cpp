// SPDX-License-Identifier: Apache-2.0
#include "lean/lean_rules.h"

#include <cmath>
#include <sstream>

namespace dravik::lean {

namespace {

std::string number(double value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

bool finite(const Point2& p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Code points of valid UTF-8 without control characters; none when the text breaks either rule.
std::optional<std::size_t> printableLength(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < text.size(); ++count) {
        auto byte = static_cast<unsigned char>(text[i]);
        std::size_t extra = 0;
        if (byte >= 0x80) {
            if ((byte & 0xE0) == 0xC0)
                extra = 1;
            else if ((byte & 0xF0) == 0xE0)
                extra = 2;
            else if ((byte & 0xF8) == 0xF0)
                extra = 3;
            else
                return std::nullopt;
        }
        if (i + extra >= text.size())
            return std::nullopt;
        char32_t code = extra == 0 ? byte : byte & (0x3F >> extra);
        for (std::size_t k = 1; k <= extra; ++k) {
            auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80)
                return std::nullopt;
            code = (code << 6) | (next & 0x3F);
        }
        constexpr char32_t minimum[] = {0, 0x80, 0x800, 0x10000};
        if (code < minimum[extra] || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return std::nullopt;
        if (code < 0x20 || (code >= 0x7F && code <= 0x9F) || code == 0x2028 || code == 0x2029)
            return std::nullopt;
        i += extra + 1;
    }
    return count;
}

} // namespace

double length(const LeanLine& line) {
    return std::hypot(line.b.x - line.a.x, line.b.y - line.a.y);
}

std::optional<std::string> lineProblem(const LeanLine& line) {
    if (!finite(line.a) || !finite(line.b))
        return "has an endpoint that is not a finite number";
    if (!std::isfinite(line.uncertainty) || line.uncertainty < minLeanUncertainty ||
        line.uncertainty > maxLeanUncertainty)
        return "has an uncertainty outside " + number(minLeanUncertainty) + " to " +
               number(maxLeanUncertainty) + " pixels";
    if (!(length(line) >= minLeanLineLength))
        return "is shorter than " + number(minLeanLineLength) + " pixel";
    return std::nullopt;
}

std::optional<std::string> flagProblem(const LeanAnnotation& annotation) {
    if (annotation.wheelReviewed && !annotation.wheel)
        return "marks the wheel axis reviewed without a wheel axis line";
    if (annotation.wheelReviewed && annotation.wheelNotObservable)
        return "marks the wheel axis both reviewed and not observable";
    if (annotation.referenceReviewed && !annotation.reference)
        return "marks the reference line reviewed without a reference line";
    return std::nullopt;
}

std::optional<std::string> textProblem(std::string_view text) {
    auto count = printableLength(text);
    if (!count || *count > maxLeanTextLength)
        return "must have at most " + std::to_string(maxLeanTextLength) +
               " characters and no control characters";
    return std::nullopt;
}

std::string trimmed(std::string_view text) {
    constexpr std::string_view blanks = " ";
    auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    auto last = text.find_last_not_of(blanks);
    return std::string(text.substr(first, last - first + 1));
}

} // namespace dravik::lean
