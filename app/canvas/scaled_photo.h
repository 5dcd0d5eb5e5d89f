#pragma once

#include <QImage>
#include <QSize>

namespace tessary {

// A photo resampled once to the size it is drawn at, so that painting is a plain copy of the
// exposed rectangle instead of a resample of a large photo on every frame.
class ScaledPhoto {
  public:
    // The photo at `size` device pixels; rebuilt only when the photo or the size changes.
    const QImage& at(const QImage& photo, QSize size);

  private:
    qint64 photoKey_ = 0;
    QSize size_;
    QImage scaled_;
};

} // namespace tessary
