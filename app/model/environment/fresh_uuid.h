// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "dravik/uuid.h"

namespace tessary {

// A random (version 4) UUID.
dravik::Uuid freshUuid();

} // namespace tessary
