#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

// Photos written in the tests with libjpeg and libpng, so that every byte is known.
namespace photo_fixtures {

struct Rgb {
    std::uint8_t r = 0, g = 0, b = 0;
    bool operator==(const Rgb&) const = default;
};

// An 8-bit RGB picture in memory.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;

    static Picture filled(int width, int height, const std::function<Rgb(int x, int y)>& colour);
    Rgb at(int x, int y) const;
};

struct JpegOptions {
    int quality = 100;
    bool fullChroma = true; // 4:4:4; otherwise 4:2:0
    int orientation = 0;    // 0: no EXIF segment
    bool bigEndianExif = false;
    bool progressive = false;
};

std::vector<std::uint8_t> encodeJpeg(const Picture& picture, const JpegOptions& options = {});
// Four samples a pixel, stored as given (Adobe files store them inverted: 255 is no ink).
std::vector<std::uint8_t> encodeCmykJpeg(int width, int height,
                                         const std::vector<std::uint8_t>& cmyk);
// Decodes a whole JPEG the plain way, as the reference for pixel comparisons.
Picture decodeJpeg(const std::vector<std::uint8_t>& bytes);

// The stored form of `displayed` for an EXIF orientation: what a camera held sideways writes.
Picture storedFor(const Picture& displayed, int orientation);

// An APP1 payload ("Exif\0\0" + TIFF) holding only an orientation tag.
std::vector<std::uint8_t> exifSegment(int orientation, bool bigEndian);

struct PngOptions {
    int colourType = 2; // PNG_COLOR_TYPE_RGB
    int bitDepth = 8;
    bool interlaced = false;
    int orientation = 0; // 0: no eXIf chunk
};

// `samples` holds bitDepth-wide samples (big-endian for 16 bit) or palette indices, row by row,
// packed as libpng expects; `palette` and `transparency` are for palette photos.
std::vector<std::uint8_t> encodePng(int width, int height, const std::vector<std::uint8_t>& samples,
                                    const PngOptions& options, const std::vector<Rgb>& palette = {},
                                    const std::vector<std::uint8_t>& transparency = {});

std::string sha256Hex(const std::vector<std::uint8_t>& bytes); // "sha256:" + hex, via OpenSSL
void writeFile(const std::filesystem::path& file, const std::vector<std::uint8_t>& bytes);
std::vector<std::uint8_t> readFile(const std::filesystem::path& file);

// A fresh, empty folder removed again when the value goes away.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();
    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

} // namespace photo_fixtures
