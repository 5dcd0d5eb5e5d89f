// SPDX-License-Identifier: Apache-2.0
#include "environment/fresh_uuid.h"

#include <QByteArray>
#include <QUuid>
#include <algorithm>
#include <array>
#include <cstdint>

namespace tessary {

dravik::Uuid freshUuid() {
    const QByteArray bytes = QUuid::createUuid().toRfc4122();
    std::array<std::uint8_t, 16> raw{};
    std::copy_n(reinterpret_cast<const std::uint8_t*>(bytes.constData()), raw.size(), raw.begin());
    return dravik::Uuid(raw);
}

} // namespace tessary
