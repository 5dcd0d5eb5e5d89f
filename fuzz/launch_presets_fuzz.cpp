// SPDX-License-Identifier: Apache-2.0
#include "dravik/launch_config.h"
#include "fuzz_support.h"

#include <nlohmann/json.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::checkDecoder(
        data, size,
        [](std::string_view text) { return dravik::decodeLaunchPresets(text, "launch.json"); },
        [](const std::vector<dravik::LaunchPreset>& presets) {
            auto list = nlohmann::ordered_json::array();
            for (const auto& preset : presets)
                list.push_back({{"title", preset.title},
                                {"manifest", preset.manifest},
                                {"results", preset.results}});
            return list.dump();
        });
    return 0;
}
