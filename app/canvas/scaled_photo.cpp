#include "scaled_photo.h"

namespace tessary {

const QImage& ScaledPhoto::at(const QImage& photo, QSize size) {
    if (photo.isNull() || size.isEmpty()) {
        scaled_ = QImage();
        photoKey_ = 0;
        size_ = QSize();
        return scaled_;
    }
    if (photo.cacheKey() == photoKey_ && size == size_ && !scaled_.isNull())
        return scaled_;
    // Opaque 32-bit rows are what the raster engine copies fastest.
    QImage source = photo.format() == QImage::Format_RGB32
                        ? photo
                        : photo.convertToFormat(QImage::Format_RGB32);
    scaled_ = source.size() == size
                  ? source
                  : source.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    photoKey_ = photo.cacheKey();
    size_ = size;
    return scaled_;
}

} // namespace tessary
