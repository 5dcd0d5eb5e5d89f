// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <memory>
#include <string>

struct evp_md_ctx_st;

namespace dravik {

// A SHA-256 of bytes that come in pieces.
class Sha256 {
  public:
    Sha256();
    void add(const void* data, std::size_t size);
    // "sha256:" + 64 lower-case hex digits of every byte added; asked once, at the end.
    std::string text();

  private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };
    std::unique_ptr<evp_md_ctx_st, Free> context_;
};

// "sha256:" + 64 lower-case hex digits of the bytes.
std::string sha256Text(const void* data, std::size_t size);

} // namespace dravik
