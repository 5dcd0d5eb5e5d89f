#include "dravik/error.h"
#include "dravik/file_io.h"
#include "dravik/image.h"
#include "dravik/parallel.h"
#include "dravik/review.h"
#include "dravik/store.h"
#include "hash/sha256.h"
#include "image/photo_codec.h"
#include "io/io_failure.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <new>
#include <tuple>

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

// A frame's photo as checked for opening: the file it resolves to, as it was read, and its
// header. The bytes are not kept.
struct VerifiedPhoto {
    fs::path file;
    FileStamp stamp;
    PhotoHeader header;
};

VerifiedPhoto verify(const ReviewFrame& frame, const fs::path& manifest) {
    VerifiedPhoto photo;
    photo.file = ReviewStore::assetURL(frame.file, manifest);
    const FileContents contents = readWholeFile(photo.file, "photo", maxPhotoFileBytes);
    const std::string name = quotedName(photo.file);
    photo.stamp = contents.stamp;
    photo.header = readPhotoHeader(bytesOf(contents.bytes), contents.bytes.size(), name);
    if (sha256Text(contents.bytes.data(), contents.bytes.size()) != frame.sourceHash)
        throw DravikError(sourceChanged);
    // Points are in pixels of the oriented photo: a photo of another shape would put every joint
    // and the panel in the wrong place.
    if (photo.header.oriented() != frame.imageSize)
        throw DravikError(name + " is " + sizeText(photo.header.oriented()) +
                          " pixels, but the session expects " + sizeText(frame.imageSize) + ".");
    return photo;
}

// Reads the photo again for its pixels. A file that is not the one verified (another stamp) is
// taken only when its content is still the analysed one.
Image decodeVerified(const ReviewFrame& frame, const VerifiedPhoto& photo) {
    const FileContents contents = readWholeFile(photo.file, "photo", maxPhotoFileBytes);
    if (contents.stamp != photo.stamp &&
        sha256Text(contents.bytes.data(), contents.bytes.size()) != frame.sourceHash)
        throw DravikError(sourceChanged);
    return decodePhotoRegion(bytesOf(contents.bytes), contents.bytes.size(), photo.header,
                             frame.panel, quotedName(photo.file));
}

// The bytes a decoded panel holds: the panel rounded outwards and clipped to the photo, as
// decodePhotoRegion decodes it.
std::uint64_t panelBytes(const PixelRect& panel, ImageSize photo) {
    const double width =
        std::min<double>(photo.width, std::ceil(panel.maxX())) - std::max(0.0, std::floor(panel.x));
    const double height = std::min<double>(photo.height, std::ceil(panel.maxY())) -
                          std::max(0.0, std::floor(panel.y));
    if (!(width > 0 && height > 0))
        return 0; // refused when decoded
    return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height) * 3;
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

} // namespace

std::vector<Image> loadFramePhotos(const ReviewDocument& document, const fs::path& manifest,
                                   std::uint64_t budgetBytes) {
    const std::vector<ReviewFrame>& frames = document.frames();
    // Every photo is read and checked before any is decoded, so that the budget is known first.
    std::atomic<std::size_t> firstFailure = frames.size();
    const std::vector<Verification> verified =
        parallelMap<Verification>(frames.size(), [&](std::size_t index) {
            Verification outcome;
            if (index > firstFailure.load())
                return outcome; // an earlier frame already fails; its sentence wins
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

    // Frames showing the same panel of the same file share one decode; the others add theirs to
    // the budget, in document order, so that the frame refused is always the same one.
    using Key = std::tuple<std::uint64_t, std::uint64_t, double, double, double, double>;
    std::map<Key, std::size_t> decodes; // the first frame of each decode
    std::vector<std::size_t> decodeOf(frames.size());
    std::vector<std::size_t> firstFrames;
    std::uint64_t total = 0;
    for (std::size_t index = 0; index < frames.size(); ++index) {
        if (verified[index].failure)
            std::rethrow_exception(verified[index].failure);
        const VerifiedPhoto& photo = *verified[index].photo;
        const PixelRect& panel = frames[index].panel;
        const Key key{photo.stamp.device, photo.stamp.inode, panel.x, panel.y,
                      panel.width,        panel.height};
        auto [found, added] = decodes.emplace(key, firstFrames.size());
        decodeOf[index] = found->second;
        if (!added)
            continue;
        firstFrames.push_back(index);
        total += panelBytes(panel, photo.header.oriented());
        if (total > budgetBytes)
            throw loadFailure(frames[index], "Decoding " + quotedName(photo.file) +
                                                 " would take this session past " +
                                                 amountText(budgetBytes) +
                                                 " of decoded photos, the most it may hold.");
    }

    const std::vector<Image> decoded =
        parallelMap<Image>(firstFrames.size(), [&](std::size_t decode) {
            const ReviewFrame& frame = frames[firstFrames[decode]];
            return forFrame(
                frame, [&] { return decodeVerified(frame, *verified[firstFrames[decode]].photo); });
        });
    std::vector<Image> images;
    images.reserve(frames.size());
    for (std::size_t index = 0; index < frames.size(); ++index)
        images.push_back(decoded[decodeOf[index]]);
    return images;
}

} // namespace dravik
