// SPDX-License-Identifier: Apache-2.0
#include "command_line.h"

#include "tessary/version.h"

#include <iostream>

namespace tessary {

std::optional<int> CommandLine::parse(int argc, char** argv, const std::vector<option>& extra,
                                      const std::function<void(int, const char*)>& take) {
    std::vector<option> options = {{"output", required_argument, nullptr, 'o'},
                                   {"help", no_argument, nullptr, 'h'},
                                   {"version", no_argument, nullptr, 'V'}};
    options.insert(options.end(), extra.begin(), extra.end());
    options.push_back({nullptr, 0, nullptr, 0});
    opterr = 0;
    for (int option; (option = getopt_long(argc, argv, ":o:hV", options.data(), nullptr)) != -1;) {
        switch (option) {
        case 'o':
            output_ = optarg;
            break;
        case 'h':
            std::cout << usage_ << help_;
            return 0;
        case 'V':
            std::cout << program_ << " " << version << "\n";
            return 0;
        case ':':
            return usageError(std::string(argv[optind - 1]) + " needs a value.");
        case '?':
            return usageError(std::string(argv[optind - 1]) + " is not an option.");
        default:
            take(option, optarg);
        }
    }
    return std::nullopt;
}

int CommandLine::usageError(const std::string& problem) const {
    std::cerr << program_ << ": " << problem << "\n" << usage_;
    return usageStatus;
}

} // namespace tessary
