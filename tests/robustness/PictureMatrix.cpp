#include "tests/robustness/PictureMatrix.h"

#include <gtest/gtest.h>

#include <iostream>

#include "tests/robustness/OutcomeTable.h"
#include "tests/support/CapturedStream.h"

namespace Quorvane::Robustness {

void TryOnAllPictures(const std::vector<PictureOperation>& operations) {
    for (const PictureOperation& operation : operations) {
        for (const HostPicture& host : HostPictures()) {
            if (!operation.triedOn(host)) continue;
            const cv::Mat before = host.memory.clone();
            std::string outcome;
            {
                const TestSupport::CapturedStream console(std::cout);
                const TestSupport::CapturedStream errors(std::cerr);
                outcome = OutcomeOf([&] { return operation.tried(host.image); });
            }
            // OpenCV leaves open what a matrix of three dimensions is as a picture. It is to do no harm.
            const std::string told = host.IsFlat() ? operation.told(host) : outcome;
            OutcomeTable::Instance().Count(operation.name, host.Name(), outcome, told);
            if (HaveSameBytes(host.memory, before)) continue;
            EXPECT_TRUE(operation.writesToInput(host)) << operation.name << " has changed its input, " << host.Name();
            cv::Mat memory = host.memory;
            before.copyTo(memory);
        }
    }
}

}  // namespace Quorvane::Robustness
