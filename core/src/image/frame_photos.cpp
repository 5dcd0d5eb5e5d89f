// SPDX-License-Identifier: Apache-2.0
#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/image.h"
#include "dravik/parallel.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "hash/sha256.h"
#include "image/photo_codec.h"
#include "io/io_failure.h"

#include <atomic>
#include <map>
#include <memory>
#include <new>
#include <span>
#include <tuple>
#include <utility>

namespace dravik {

namespace fs = std::filesystem;

namespace {

const std::string sourceChanged = "Source hash changed; reanalyze before applying corrections.";

const std::uint8_t* bytesOf(const std::string& text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

std::string sizeText(ImageSize size) {
    return std::to_string(size.width) + " \u00d7 " + std::to_string(size.height);
}

std::string amountText(std::uint64_t bytes) {
    constexpr std::uint64_t gibibyte = 1ull << 30;
    if (bytes % gibibyte == 0)
        return std::to_string(bytes / gibibyte) + " GiB";
    return std::to_string(bytes / mebibyte) + " MiB";
}

PixelBox boxOf(const PixelRect& rect) {
    return {static_cast<int>(rect.x), static_cast<int>(rect.y), static_cast<int>(rect.width),
            static_cast<int>(rect.height)};
}

PixelRect rectOf(const PixelBox& box) {
    return {static_cast<double>(box.x), static_cast<double>(box.y), static_cast<double>(box.width),
            static_cast<double>(box.height)};
}

// One reading of a photo: its header and hash are of the same bytes.
struct PhotoReading {
    FileStamp stamp;
    PhotoHeader header;
    std::string hash;
};

// Reads a photo once, hashing it as it comes through a buffer each thread keeps: holding every
// photo whole meant allocating and clearing megabytes a photo, which cost as much as the hash.
// The header is decoded from the first piece; the decoders fail when the bytes run out, so a
// header they accept there is the whole file's. One that does not fit (or is damaged) is decoded
// from the whole file, kept for it.
PhotoReading readPhoto(const fs::path& file, const std::string& name) {
    constexpr std::size_t pieceBytes = mebibyte;
    thread_local const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(pieceBytes);
    Sha256 hash;
    std::optional<PhotoHeader> header;
    bool first = true;
    std::string whole;
    const FileStamp stamp = readFileInPieces(
        file, "photo", maxPhotoFileBytes, {buffer.get(), pieceBytes},
        [&](std::span<const std::uint8_t> piece) {
            if (std::exchange(first, false)) {
                try {
                    header = readPhotoHeader(piece.data(), piece.size(), name);
                } catch (const DravikError&) {
                }
            }
            if (!header)
                whole.append(reinterpret_cast<const char*>(piece.data()), piece.size());
            hash.add(piece.data(), piece.size());
        });
    if (!header)
        header = readPhotoHeader(bytesOf(whole), whole.size(), name);
    return {stamp, *header, hash.text()};
}

VerifiedPhoto verify(const ReviewFrame& frame, const fs::path& manifest) {
    VerifiedPhoto photo;
    photo.file = ReviewStore::assetURL(frame.file, manifest);
    const std::string name = quotedName(photo.file);
    const PhotoReading reading = readPhoto(photo.file, name);
    photo.stamp = reading.stamp;
    const PhotoHeader& header = reading.header;
    if (reading.hash != frame.sourceHash)
        throw DravikError(sourceChanged);
    photo.size = header.oriented();
    photo.orientation = header.orientation;
    // Points are in pixels of the oriented photo: a photo of another shape would put every joint
    // and the panel in the wrong place.
    if (photo.size != frame.imageSize)
        throw DravikError(name + " is " + sizeText(photo.size) +
                          " pixels, but the session expects " + sizeText(frame.imageSize) + ".");
    const PixelBox panel = wholePixels(frame.panel, photo.size, name);
    photo.panel = rectOf(panel);
    photo.panelBytes = static_cast<std::uint64_t>(panel.width) * panel.height * 3;
    return photo;
}

ScaledPanel decodeVerified(const ReviewFrame& frame, const VerifiedPhoto& photo, PhotoScale scale) {
    const FileContents contents = readWholeFile(photo.file, "photo", maxPhotoFileBytes);
    if (contents.stamp != photo.stamp &&
        sha256Text(contents.bytes.data(), contents.bytes.size()) != frame.sourceHash)
        throw DravikError(sourceChanged);
    const std::string name = quotedName(photo.file);
    const PhotoHeader header =
        readPhotoHeader(bytesOf(contents.bytes), contents.bytes.size(), name);
    const auto denominator = static_cast<int>(scale);
    const PixelBox panel = boxOf(photo.panel);
    ScaledPanel decoded{decodePhotoBox(bytesOf(contents.bytes), contents.bytes.size(), header,
                                       panel, name, denominator),
                        scale,
                        {}};
    decoded.covers = rectOf(scaledBox(panel, photo.size, photo.orientation, denominator).covers);
    return decoded;
}

// The one sentence of a frame whose photo cannot be shown.
DravikError loadFailure(const ReviewFrame& frame, const std::string& reason) {
    return DravikError("Cannot load " + frame.role + " photo (" + frame.file + "): " + reason +
                       " Previous selection preserved.");
}

template <class Work> auto forFrame(const ReviewFrame& frame, Work work) {
    try {
        return work();
    } catch (const DravikError& error) {
        throw loadFailure(frame, error.message());
    } catch (const std::bad_alloc&) {
        throw loadFailure(frame, "There is not enough memory to decode it.");
    }
}

struct Verification {
    std::optional<VerifiedPhoto> photo;
    std::exception_ptr failure; // none for a frame skipped after an earlier failure
};

// Verifies every frame on all cores. A frame after one that failed is skipped: the earlier
// failure is the one reported.
std::vector<Verification> verifyEach(const std::vector<ReviewFrame>& frames,
                                     const fs::path& manifest) {
    std::atomic<std::size_t> firstFailure = frames.size();
    return parallelMap<Verification>(frames.size(), [&](std::size_t index) {
        Verification outcome;
        if (index > firstFailure.load())
            return outcome;
        try {
            outcome.photo =
                forFrame(frames[index], [&] { return verify(frames[index], manifest); });
        } catch (...) {
            outcome.failure = std::current_exception();
            std::size_t seen = firstFailure.load();
            while (index < seen && !firstFailure.compare_exchange_weak(seen, index)) {
            }
        }
        return outcome;
    });
}

} // namespace

std::vector<VerifiedPhoto> verifyFramePhotos(const ReviewDocument& document,
                                             const fs::path& manifest) {
    std::vector<VerifiedPhoto> photos;
    photos.reserve(document.frames().size());
    for (Verification& outcome : verifyEach(document.frames(), manifest)) {
        if (outcome.failure)
            std::rethrow_exception(outcome.failure);
        photos.push_back(std::move(*outcome.photo));
    }
    return photos;
}

VerifiedPhoto verifyFramePhoto(const ReviewFrame& frame, const fs::path& manifest) {
    return forFrame(frame, [&] { return verify(frame, manifest); });
}

ImageSize scaledPanelSize(const VerifiedPhoto& photo, PhotoScale scale) {
    return scaledBox(boxOf(photo.panel), photo.size, photo.orientation, static_cast<int>(scale))
        .size;
}

PhotoScale scaleCovering(const VerifiedPhoto& photo, ImageSize wanted) {
    for (PhotoScale scale : {PhotoScale::eighth, PhotoScale::quarter, PhotoScale::half}) {
        const ImageSize size = scaledPanelSize(photo, scale);
        if (size.width >= wanted.width && size.height >= wanted.height)
            return scale;
    }
    return PhotoScale::full;
}

ScaledPanel decodeFramePhoto(const ReviewFrame& frame, const VerifiedPhoto& photo,
                             PhotoScale scale) {
    return forFrame(frame, [&] { return decodeVerified(frame, photo, scale); });
}

std::vector<Image> loadFramePhotos(const ReviewDocument& document, const fs::path& manifest,
                                   std::uint64_t budgetBytes) {
    const std::vector<ReviewFrame>& frames = document.frames();
    // Every photo is checked before any is decoded, so that the budget is known first.
    const std::vector<Verification> verified = verifyEach(frames, manifest);

    // Frames showing the same panel of the same file share one decode; the others add theirs to
    // the budget, in document order, so that the frame refused is always the same one.
    using Key = std::tuple<std::uint64_t, std::uint64_t, double, double, double, double>;
    std::map<Key, std::size_t> decodes;
    std::vector<std::size_t> decodeOf(frames.size());
    std::vector<std::size_t> firstFrames; // of each decode
    std::uint64_t total = 0;
    for (std::size_t index = 0; index < frames.size(); ++index) {
        if (verified[index].failure)
            std::rethrow_exception(verified[index].failure);
        const VerifiedPhoto& photo = *verified[index].photo;
        const Key key{photo.stamp.device, photo.stamp.inode, photo.panel.x,
                      photo.panel.y,      photo.panel.width, photo.panel.height};
        auto [found, added] = decodes.emplace(key, firstFrames.size());
        decodeOf[index] = found->second;
        if (!added)
            continue;
        firstFrames.push_back(index);
        total += photo.panelBytes;
        if (total > budgetBytes)
            throw loadFailure(frames[index], "Decoding " + quotedName(photo.file) +
                                                 " would take this session past " +
                                                 amountText(budgetBytes) +
                                                 " of decoded photos, the most it may hold.");
    }

    const std::vector<Image> decoded =
        parallelMap<Image>(firstFrames.size(), [&](std::size_t decode) {
            const std::size_t index = firstFrames[decode];
            return decodeFramePhoto(frames[index], *verified[index].photo).image;
        });
    std::vector<Image> images;
    images.reserve(frames.size());
    for (std::size_t index = 0; index < frames.size(); ++index)
        images.push_back(decoded[decodeOf[index]]);
    return images;
}

} // namespace dravik
