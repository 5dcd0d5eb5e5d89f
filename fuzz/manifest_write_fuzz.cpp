// SPDX-License-Identifier: Apache-2.0
// The manifest discovery writes for a folder of photos, from arbitrary file names and sizes: it is
// either refused with a sentence (a name that is not UTF-8 or holds a control character) or reads
// back as written, with unique pair ids that a frame id can be built from.
//
// Input: records of [name length][name bytes][width: 4 bytes][height: 4 bytes], little-endian.
// The first record's name is the folder's. Names are made possible on disk first: no "/" or NUL,
// not hidden, not empty, each once, as a directory listing gives them.

#include "discovery/discovered_manifest.h"
#include "fuzz_support.h"

#include <cstdio>
#include <cstdlib>
#include <set>

namespace {

std::uint32_t readU32(const std::uint8_t* p) {
    return p[0] | (p[1] << 8) | (p[2] << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

int side(std::uint32_t raw) {
    return static_cast<int>(raw % 0x7fffffffu) + 1;
}

[[noreturn]] void broken(const char* what) {
    std::fprintf(stderr, "Written manifest: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzzing::lastInputDecoded = false;
    fuzzing::lastRefusal.clear();
    std::string title;
    std::vector<dravik::discovery::PhotoFacts> photos;
    std::set<std::string> names;
    std::size_t at = 0;
    while (at < size) {
        std::size_t length = data[at++];
        if (at + length + 8 > size)
            break;
        std::string name(reinterpret_cast<const char*>(data + at), length);
        at += length;
        int width = side(readU32(data + at));
        int height = side(readU32(data + at + 4));
        at += 8;
        for (char& c : name)
            if (c == '/' || c == '\0')
                c = '_';
        if (title.empty()) {
            title = name.empty() ? "folder" : name;
            continue;
        }
        if (name.empty() || name.front() == '.' || !names.insert(name).second)
            continue;
        photos.push_back({name, "sha256:" + std::string(64, 'f'), {width, height}});
    }

    const dravik::SessionManifest manifest = dravik::discovery::manifestForPhotos(title, photos);
    std::string text;
    try {
        text = manifest.encode();
    } catch (const dravik::DravikError& refusal) {
        fuzzing::lastRefusal = refusal.what();
        return 0;
    }
    fuzzing::lastInputDecoded = true;
    std::set<std::string> ids;
    for (const dravik::PairInput& pair : manifest.pairs)
        if (pair.id.empty() || pair.id.find('/') != std::string::npos ||
            !ids.insert(pair.id).second)
            broken("pair ids are not unique, usable ids");
    try {
        if (!(dravik::SessionManifest::decode(text, "session.json") == manifest))
            broken("it reads back differently");
    } catch (const dravik::DravikError& refusal) {
        broken(refusal.what());
    }
    return 0;
}
