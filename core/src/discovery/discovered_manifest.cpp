// SPDX-License-Identifier: Apache-2.0
#include "discovery/discovered_manifest.h"

#include "dravik/discovery.h"

#include <filesystem>
#include <set>

namespace dravik::discovery {

namespace {

bool safe(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_';
}

} // namespace

std::string uniqueID(const std::string& base, std::set<std::string>& taken) {
    std::string id = base;
    for (int n = 2; !taken.insert(id).second; ++n)
        id = base + "-" + std::to_string(n);
    return id;
}

std::string safeID(std::string_view stem) {
    std::string id;
    for (char c : stem) {
        if (safe(c))
            id += c;
        else if (!id.empty() && id.back() != '-')
            id += '-';
    }
    while (!id.empty() && id.back() == '-')
        id.pop_back();
    std::size_t start = id.find_first_not_of('-');
    id = start == std::string::npos ? std::string() : id.substr(start);
    return id.empty() ? "photo" : id;
}

SessionManifest manifestForPhotos(const std::string& title, const std::vector<PhotoFacts>& photos) {
    SessionManifest manifest;
    manifest.title = title;
    std::set<std::string> taken;
    for (const PhotoFacts& photo : photos) {
        std::string stem = std::filesystem::path(photo.fileName).stem().string();
        PixelRect whole{0, 0, static_cast<double>(photo.size.width),
                        static_cast<double>(photo.size.height)};
        RiderInput rider;
        rider.id = importedRiderID;
        rider.role = "subject";
        rider.displayName = SessionDiscovery::unreviewedRiderName();
        rider.file = photo.fileName;
        rider.sourceHash = photo.sourceHash;
        rider.imageSize = photo.size;
        rider.panel = whole;
        rider.crop = whole;
        PairInput pair;
        pair.id = uniqueID(safeID(stem), taken);
        pair.title = photo.fileName;
        pair.riders.push_back(std::move(rider));
        manifest.pairs.push_back(std::move(pair));
    }
    return manifest;
}

} // namespace dravik::discovery
