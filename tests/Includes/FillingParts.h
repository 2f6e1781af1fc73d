#pragma once

#include <iostream>
#include <opencv2/core/mat.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Includes/smartfilling.h"
#include "tests/support/CapturedStream.h"
#include "tests/support/ConsoleText.h"
#include "tests/support/Tray.h"

namespace Quorvane::TestSupport {

/// Diameter in pixels of the parts on the small tray.
constexpr double smallPartSize = 70.0;

/// A tray of 333 x 250 pixels with six parts.
inline Tray SmallTray() {
    TraySettings settings;
    settings.size = {333, 250};
    settings.partSize = smallPartSize;
    settings.columns = 3;
    settings.rows = 2;
    return RenderTray(settings);
}

/// A template image with the point `target` in it.
struct TemplateImage {
    cv::Mat image;
    cv::Point2f target;
};

/// The first part of a tray with its surroundings.
inline TemplateImage FirstPartOf(const Tray& tray) {
    const cv::Point2d middle = tray.poses.front().middle;
    const cv::Point2d half(smallPartSize / 2.0 + 6.0, smallPartSize / 2.0 + 6.0);
    const cv::Rect box =
        cv::Rect(cv::Point(middle - half), cv::Point(middle + half)) & cv::Rect(cv::Point(), tray.picture.size());
    const cv::Point2d mark = tray.poses.front().Place(TrayPartMark(smallPartSize));
    return {tray.picture(box).clone(), cv::Point2f(mark) - cv::Point2f(box.tl())};
}

/// The detector of the filling job.
inline line2Dup::Detector FillingDetector() { return line2Dup::Detector(64, {1, 2}, 30.0f, 60.0f); }

inline std::vector<ShapeVariant> Train(const TemplateImage& part, line2Dup::Detector& detector,
                                       bool rotateFromFirst = true, std::vector<float> angles = {0.0f, 360.0f},
                                       float step = 0.2f) {
    return SmartFilling().TrainTemplateFromMat(part.image, detector, rotateFromFirst, true, part.target,
                                               std::move(angles), step, {1.0f}, 0.0f, 6);
}

/// What an action writes to the two streams of a console.
struct Console {
    std::string out;
    std::string err;
};

template <typename Action>
Console Listen(Action action) {
    const CapturedStream out(std::cout);
    const CapturedStream err(std::cerr);
    action();
    return {out.Text(), err.Text()};
}

/// Times, and the matcher's own notice of a small template, are not part of what is looked at.
inline std::string FillingNotices(const std::string& text) {
    return WithoutTimes(WithoutLine(text, "have no enough features, exaustive mode"));
}

/// What a timer without a title writes.
inline const std::string timeLine = "\nelasped time:#s\n\n";

}  // namespace Quorvane::TestSupport
