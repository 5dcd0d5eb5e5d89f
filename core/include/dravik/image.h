// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/file_io.h"
#include "dravik/geometry.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace dravik {

class ReviewDocument;
struct ReviewFrame;

// A decoded picture: 8-bit RGB, rows top to bottom, `stride` bytes apart.
struct Image {
    int width = 0;
    int height = 0;
    std::size_t stride = 0;
    std::shared_ptr<const std::vector<std::uint8_t>> pixels;

    const std::uint8_t* data() const { return pixels ? pixels->data() : nullptr; }
    bool empty() const { return width == 0 || height == 0; }
};

// Part of a photo decoded at a fraction of its size: `image` shows the photo rectangle `rect`
// (oriented pixels), each of its pixels standing for about reduction × reduction of the photo's.
struct ReducedImage {
    Image image;
    PixelRect rect;
};

// A photo read once from disk: its content hash and its size after EXIF orientation.
// Pixels are decoded on demand, and only for the part that is asked for.
class ImageInput {
  public:
    // Refuses files that are not regular or larger than 256 MiB, photos that are not JPEG or PNG
    // or are damaged, and photos declaring more than 200 megapixels (150 with a fourth sample).
    static ImageInput load(const std::filesystem::path& file);

    const std::string& sourceHash() const { return sourceHash_; } // "sha256:" + 64 hex digits
    ImageSize size() const { return size_; }                      // after EXIF orientation
    // The rectangle (in oriented pixels, rounded outwards, clipped to the photo) decoded.
    Image cropped(const PixelRect& rect) const;
    Image decoded() const; // the whole photo
    // The rectangle (rounded outwards to whole blocks of `reduction` pixels, clipped to the photo)
    // decoded at 1/reduction of its size, reduction being 1, 2, 4 or 8. A JPEG photo is scaled
    // while it is decoded, at a fraction of the time and memory of all its pixels.
    ReducedImage reduced(const PixelRect& rect, int reduction) const;

  private:
    std::filesystem::path file_;
    std::shared_ptr<const std::string> bytes_;
    std::string sourceHash_;
    ImageSize size_; // oriented
};

// A frame's photo checked for opening, without its pixels: read once, hashed and found equal to
// the frame's sourceHash, its header read and found to be the frame's imageSize and within the
// decoding caps. What a later decode needs, and nothing of the bytes.
struct VerifiedPhoto {
    std::filesystem::path file;   // resolved inside the manifest's folder
    FileStamp stamp;              // the file as it was read and hashed
    ImageSize size;               // after EXIF orientation
    int orientation = 1;          // EXIF 1..8
    PixelRect panel;              // the frame's panel in whole pixels, clipped to the photo
    std::uint64_t panelBytes = 0; // the panel decoded at full size, as RGB
};

// Verifies every frame's photo, on all cores: results in document order; the first failure in
// document order wins, with the sentence "Cannot load <role> photo (<file>): <reason> Previous
// selection preserved."
std::vector<VerifiedPhoto> verifyFramePhotos(const ReviewDocument& document,
                                             const std::filesystem::path& manifest);
// One frame's photo verified as above, failing with the same sentence.
VerifiedPhoto verifyFramePhoto(const ReviewFrame& frame, const std::filesystem::path& manifest);

// The DCT scales a panel is decoded at, by their denominator. PNGs, which have none, are decoded
// at full size and shrunk by the mean of each block as they are read.
enum class PhotoScale { full = 1, half = 2, quarter = 4, eighth = 8 };

// A panel decoded at a scale. DCT scaling works on the stored photo's grid of `scale` pixels, so
// the image shows `covers`, the panel grown to that grid (the same as the panel at full size):
// image pixel (u, v) stands for the photo pixels from covers.x + u·s, covers.y + v·s, s at a
// time, fewer along the photo's own edges.
struct ScaledPanel {
    Image image;
    PhotoScale scale = PhotoScale::full;
    PixelRect covers;
};

// The size a verified photo's panel decodes to at `scale`, without decoding it.
ImageSize scaledPanelSize(const VerifiedPhoto& photo, PhotoScale scale);
// The smallest scale whose decode is at least `wanted` in both directions; full when no smaller
// one is.
PhotoScale scaleCovering(const VerifiedPhoto& photo, ImageSize wanted);

// Decodes a verified frame's panel at `scale`. The file is read again; one whose stamp changed
// since it was verified is taken only when it still hashes to the frame's sourceHash. Data found
// damaged only now is refused too, with the same sentence as verifyFramePhotos.
ScaledPanel decodeFramePhoto(const ReviewFrame& frame, const VerifiedPhoto& photo,
                             PhotoScale scale = PhotoScale::full);

// The most decoded pixels opening a session holds at once.
inline constexpr std::uint64_t defaultOpeningBudget = 2ull << 30;

// Every frame's photo, hashed, checked against the frame's sourceHash and imageSize and cropped
// to its panel, on all cores. Frames showing the same panel of the same file share one decode;
// together the decodes may not exceed `budgetBytes`, which is checked from the headers before
// any is decoded. Results are in document order; the first failure in document order wins, with
// a sentence naming the frame's role and file.
std::vector<Image> loadFramePhotos(const ReviewDocument& document,
                                   const std::filesystem::path& manifest,
                                   std::uint64_t budgetBytes = defaultOpeningBudget);

} // namespace dravik
