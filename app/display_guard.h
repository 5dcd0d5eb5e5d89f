// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace tessary {

// Qt aborts the process when no platform plugin starts: no display, one that cannot be reached,
// or a QT_QPA_PLATFORM that does not work. While a guard lives, that failure ends the process
// with one sentence on stderr and status 1 instead; Qt's other messages are held back until the
// guard ends, so that none of the platform's complaints comes before the sentence.
class DisplayFailureGuard {
  public:
    DisplayFailureGuard();
    ~DisplayFailureGuard();
    DisplayFailureGuard(const DisplayFailureGuard&) = delete;
    DisplayFailureGuard& operator=(const DisplayFailureGuard&) = delete;
};

} // namespace tessary
