#pragma once

#include "dravik/geometry.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace dravik {

class ReviewDocument;

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
    // Refuses photos that are not JPEG or PNG, are damaged, or declare more than 200 megapixels.
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
    enum class Format { jpeg, png };
    std::filesystem::path file_;
    std::shared_ptr<const std::vector<std::uint8_t>> bytes_;
    std::string sourceHash_;
    ImageSize size_;      // oriented
    ImageSize encoded_;   // as stored
    int orientation_ = 1; // EXIF 1..8
    Format format_ = Format::jpeg;
};

// Every frame's photo, hashed, checked against the frame's sourceHash and cropped to its panel,
// decoded on all cores. Results are in document order; the first failure in document order wins,
// with a sentence naming the frame's role and file.
std::vector<Image> loadFramePhotos(const ReviewDocument& document,
                                   const std::filesystem::path& manifest);

} // namespace dravik
