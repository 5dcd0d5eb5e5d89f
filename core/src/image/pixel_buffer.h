// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace dravik {

// Zeroed storage for a decoded picture. A large one asks for huge pages: a 24 MP photo's pixels
// are thousands of small pages otherwise, each faulted in on its own, which on a virtual machine
// costs as much as decoding them.
std::shared_ptr<std::vector<std::uint8_t>> newPixelBuffer(std::size_t bytes);

} // namespace dravik
