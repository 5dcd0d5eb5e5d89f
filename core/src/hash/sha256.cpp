// SPDX-License-Identifier: Apache-2.0
#include "hash/sha256.h"

#include "dravik/error.h"

#include <array>
#include <openssl/evp.h>

namespace dravik {

namespace {

void check(int result) {
    if (result != 1)
        throw DravikError("The content hash could not be computed.");
}

} // namespace

void Sha256::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context_(EVP_MD_CTX_new()) {
    if (!context_)
        throw std::bad_alloc();
    check(EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr));
}

void Sha256::add(const void* data, std::size_t size) {
    check(EVP_DigestUpdate(context_.get(), data, size));
}

std::string Sha256::text() {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned int length = 0;
    check(EVP_DigestFinal_ex(context_.get(), digest.data(), &length));
    static constexpr char hex[] = "0123456789abcdef";
    std::string text = "sha256:";
    for (unsigned int i = 0; i < length; ++i) {
        text += hex[digest[i] >> 4];
        text += hex[digest[i] & 15];
    }
    return text;
}

std::string sha256Text(const void* data, std::size_t size) {
    Sha256 hash;
    hash.add(data, size);
    return hash.text();
}

} // namespace dravik
