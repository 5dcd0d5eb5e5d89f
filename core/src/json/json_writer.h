// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "json/json_reader.h"
#include <cstdint>
#include <string>
#include <string_view>

namespace dravik::json {

enum class Layout { compact, pretty };

// A root object that starts with "format" and "version".
Json header(std::string_view format, std::int64_t version);

// The text of a value. Refuses (DravikError naming `kind`, e.g. "review document") a value that
// holds a non-finite number or a string that is not UTF-8, which JSON cannot carry faithfully.
// Pretty text is indented by two spaces and ends with a newline.
std::string dump(const Json& value, std::string_view kind, Layout layout = Layout::pretty);

} // namespace dravik::json
