// SPDX-License-Identifier: Apache-2.0
#include "samplegen.h"
#include "tessary/version.h"

#include <charconv>
#include <cstdio>
#include <exception>
#include <getopt.h>
#include <string_view>

namespace {

constexpr const char* help = R"(Usage: tessary-samplegen --bundled OUT
       tessary-samplegen --photos N --megapixels M [--seed S] [--quality Q] OUT
Draws a photo session of motorcycle riders into the folder OUT: JPEG photos, their manifest
(session.json) and detections (results.json). The same options always give the same bytes.

Options:
      --bundled       the bundled sample: a rider and a reference rider, and a rider alone
      --photos N      N unpaired rider photos (default 3)
      --megapixels M  M megapixels per photo (default 1)
      --seed S        the random seed (default 1)
      --quality Q     JPEG quality, 1 to 100 (default 85)
  -h, --help          show this help and exit
      --version       show the version and exit

Exit status: 0 written; 1 the session could not be written, with the reason on stderr; 64 wrong
arguments.
)";

template <typename T> bool parse(std::string_view text, T& value) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

int wrongArguments() {
    std::fputs("See \u201ctessary-samplegen --help\u201d.\n", stderr);
    return 64;
}

} // namespace

int main(int argc, char** argv) {
    enum { bundled = 1, photos, megapixels, seed, quality, version };
    static const option options[] = {{"bundled", no_argument, nullptr, bundled},
                                     {"photos", required_argument, nullptr, photos},
                                     {"megapixels", required_argument, nullptr, megapixels},
                                     {"seed", required_argument, nullptr, seed},
                                     {"quality", required_argument, nullptr, quality},
                                     {"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, version},
                                     {nullptr, 0, nullptr, 0}};
    tessary::samplegen::Options settings;
    int index = 0;
    for (int option; (option = getopt_long(argc, argv, "h", options, &index)) != -1;) {
        bool ok = true;
        switch (option) {
        case 'h':
            std::fputs(help, stdout);
            return 0;
        case version:
            std::printf("tessary-samplegen %s\n", tessary::version);
            return 0;
        case bundled:
            settings.bundled = true;
            break;
        case photos:
            ok = parse(optarg, settings.photos);
            break;
        case megapixels:
            ok = parse(optarg, settings.megapixels);
            break;
        case seed:
            ok = parse(optarg, settings.seed);
            break;
        case quality:
            ok = parse(optarg, settings.jpegQuality) && settings.jpegQuality >= 1 &&
                 settings.jpegQuality <= 100;
            break;
        default: // getopt_long has said what is wrong
            return wrongArguments();
        }
        if (!ok) {
            std::fprintf(stderr,
                         "tessary-samplegen: \u201c%s\u201d is not a valid value for --%s.\n",
                         optarg, options[index].name);
            return wrongArguments();
        }
    }
    if (argc - optind != 1) {
        std::fputs("tessary-samplegen needs exactly one output folder.\n", stderr);
        return wrongArguments();
    }
    try {
        tessary::samplegen::writeSession(argv[optind], settings);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessary-samplegen: %s\n", error.what());
        return 1;
    }
    return 0;
}
