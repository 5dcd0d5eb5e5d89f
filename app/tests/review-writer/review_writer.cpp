// SPDX-License-Identifier: Apache-2.0
// A second writer of a review in tests: another process that saves the file as another window
// would, through the lock and the revision guard.
//
//   review_writer REVIEW FRAME JOINT X Y [JOINT X Y]...
//
// Corrects each JOINT of the frame with the id FRAME to (X, Y), one revision each, and saves over
// the revision it read. Exit status 0 when saved; 1 with the sentence on stderr; 64 wrong
// arguments.

#include "dravik/error.h"
#include "dravik/store.h"

#include <iostream>
#include <string>

int main(int argc, char** argv) {
    if (argc < 6 || (argc - 3) % 3 != 0) {
        std::cerr << "usage: review_writer REVIEW FRAME JOINT X Y [JOINT X Y]...\n";
        return 64;
    }
    try {
        const std::string file = argv[1];
        dravik::ReviewDocument review = dravik::ReviewStore::load(file);
        const auto frame = review.frameIndex(argv[2]);
        if (!frame)
            throw dravik::DravikError("The review has no frame " + std::string(argv[2]) + ".");
        const std::int64_t read = review.revision();
        for (int i = 3; i < argc; i += 3)
            review.setJoint(*frame, argv[i],
                            dravik::Point2{std::stod(argv[i + 1]), std::stod(argv[i + 2])},
                            dravik::JointReviewState::corrected);
        dravik::ReviewStore::save(review, file, read);
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << "\n";
        return 1;
    }
    return 0;
}
