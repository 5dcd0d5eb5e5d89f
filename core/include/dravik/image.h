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

  private:
    std::filesystem::path file_;
    std::shared_ptr<const std::string> bytes_;
    std::string sourceHash_;
    ImageSize size_; // oriented
};

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
