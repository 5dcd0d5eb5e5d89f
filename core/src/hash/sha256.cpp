// SPDX-License-Identifier: Apache-2.0
#include "hash/sha256.h"

#include "dravik/error.h"

#include <array>
#include <openssl/evp.h>

namespace dravik {

std::string sha256Text(const void* data, std::size_t size) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    if (EVP_Digest(data, size, digest.data(), &length, EVP_sha256(), nullptr) != 1)
        throw DravikError("The content hash could not be computed.");
    static constexpr char hex[] = "0123456789abcdef";
    std::string text = "sha256:";
    for (unsigned int i = 0; i < length; ++i) {
        text += hex[digest[i] >> 4];
        text += hex[digest[i] & 15];
    }
    return text;
}

} // namespace dravik
