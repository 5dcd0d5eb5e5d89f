// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace dravik {

// The one error type of the library: its text is a complete sentence shown to the user unchanged.
class DravikError : public std::runtime_error {
  public:
    explicit DravikError(const std::string& message) : std::runtime_error(message) {}
    std::string message() const { return what(); }
};

} // namespace dravik
