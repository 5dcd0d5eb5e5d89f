// SPDX-License-Identifier: Apache-2.0
#include "image/pixel_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

namespace dravik {

std::shared_ptr<std::vector<std::uint8_t>> newPixelBuffer(std::size_t bytes) {
    auto pixels = std::make_shared<std::vector<std::uint8_t>>();
    pixels->reserve(bytes);
    constexpr std::size_t hugePage = std::size_t{2} << 20;
    if (bytes >= 2 * hugePage) {
        // Only whole pages of the allocation may be advised; the kernel uses huge pages for the
        // aligned stretches inside, and nothing changes where it has none to give.
        const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        const auto begin = reinterpret_cast<std::uintptr_t>(pixels->data());
        const std::uintptr_t first = (begin + page - 1) / page * page;
        const std::uintptr_t last = (begin + bytes) / page * page;
        if (last > first)
            madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
    }
    pixels->resize(bytes);
    return pixels;
}

} // namespace dravik
