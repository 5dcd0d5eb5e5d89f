#include "samplegen.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <string_view>

namespace {

constexpr const char* usage =
    "usage: tessary-samplegen --bundled OUT\n"
    "       tessary-samplegen --photos N --megapixels M [--seed S] [--quality Q] OUT\n";

template <typename T> bool parse(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

} // namespace

int main(int argc, char** argv) {
    tessary::samplegen::Options options;
    std::string folder;
    for (int i = 1; i < argc; ++i) {
        const std::string_view arg = argv[i];
        const bool hasValue = i + 1 < argc;
        bool ok = true;
        if (arg == "--bundled")
            options.bundled = true;
        else if (arg == "--photos" && hasValue)
            ok = parse(argv[++i], options.photos);
        else if (arg == "--megapixels" && hasValue)
            ok = parse(argv[++i], options.megapixels);
        else if (arg == "--seed" && hasValue)
            ok = parse(argv[++i], options.seed);
        else if (arg == "--quality" && hasValue)
            ok = parse(argv[++i], options.jpegQuality) && options.jpegQuality >= 1 &&
                 options.jpegQuality <= 100;
        else if (!arg.starts_with("--") && folder.empty())
            folder = arg;
        else
            ok = false;
        if (!ok) {
            std::fputs(usage, stderr);
            return 64;
        }
    }
    if (folder.empty()) {
        std::fputs(usage, stderr);
        return 64;
    }
    try {
        tessary::samplegen::writeSession(folder, options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessary-samplegen: %s\n", error.what());
        return 1;
    }
    return 0;
}
