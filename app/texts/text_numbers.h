// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace tessary::texts {

// printf's rounding, so that −0.4 reads "-0" and the sign never disappears.
std::string signedWhole(double value);
std::string whole(double value);

} // namespace tessary::texts
