#pragma once

#include "dravik/uuid.h"

namespace tessary {

// A random (version 4) UUID.
dravik::Uuid freshUuid();

} // namespace tessary
