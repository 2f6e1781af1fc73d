#pragma once

#include <opencv2/core/mat.hpp>

#include "framework/Algorithm.h"

namespace Quorvane {

/// Finds every copy of one object in a camera image, so that a job drawn on one copy can be repeated on the others.
///
/// The host marks a point on one copy and gives the shape of its job as a list of points. The algorithm takes the
/// object's colour around the marked point, grows a region of that colour, cuts it out as a template, trains a shape
/// matcher with all its rotations in steps of 0.2 degrees and reports, for each copy found, how the job has to be
/// shifted and turned. The marked copy is found and reported like any other.
///
/// Reached by name through `AlgorithmFactory`. Points are in pixels of the source image, which is 8-bit with three
/// channels.
///
/// | Parameter             | Kind       | Default | Meaning                                                          |
/// |-----------------------|------------|---------|------------------------------------------------------------------|
/// | "SimilarityMin"       | Float      | 0.8     | least similarity, as a fraction of 1; cut to whole percent       |
/// | "TargetShapeCenter_X" | Double     | 0       | column of the marked point                                       |
/// | "TargetShapeCenter_Y" | Double     | 0       | row of the marked point                                          |
/// | "TargetShapePoints_X" | double list| unset   | columns of the shape's points                                    |
/// | "TargetShapePoints_Y" | double list| unset   | rows of the shape's points                                       |
///
/// | Result, n = 1, 2, ...                 | Value                                                                 |
/// |---------------------------------------|-----------------------------------------------------------------------|
/// | "OutputShapeCount"                    | count of copies; how many of the keys below are of this run           |
/// | "OutputShape_n_OffsetX", "_OffsetY"   | the copy's marked point minus the marked point, pixels                |
/// | "OutputShape_n_OffsetAngle"           | turn of the copy in degrees, counter-clockwise as one looks at it     |
/// | "OutputShape_n_OffsetRotateCenterX"   | "TargetShapeCenter_X": turn the job about it, then shift it           |
/// | "OutputShape_n_OffsetRotateCentetY"   | "TargetShapeCenter_Y"; the key is written so                          |
/// | "OutputShape_n_X", "OutputShape_n_Y"  | lists of the shape's points, turned about the copy's marked point     |
/// |                                       | where the shape lies, and then shifted                                |
///
/// The lists agree with a job that is turned about the rotate centre and then shifted for copies without a turn only;
/// docs/guide/filling.md shows both. A successful run keeps an old message and leaves result keys of earlier runs with
/// more copies.
///
/// `destination` is the source with the found shapes on it: red dots where the job lies after turn and shift, and black
/// lines between the points of the lists. A point (-1, -1) of a list breaks the line.
///
/// | Status | Message                                                              | Cause                            |
/// |--------|----------------------------------------------------------------------|----------------------------------|
/// | 1      | "Can't find dominant LAB color point!"                               | the picture is empty, or the     |
/// |        |                                                                      | mark is over 15 pixels outside it|
/// | 3      | "The number of parameters<vecTargetShapePoints_X> is inconsistent    | a list of points is empty, or    |
/// |        | with the number of parameters<vecTargetShapePoints_Y>."              | they have different lengths      |
/// | 3      | "Can't find target template!"                                        | the region is over half the image|
///
/// An object with too few edges is status 0 with a count of 0. A similarity of 1 or more, or not-a-number, finds
/// nothing. The lower it is, the more places are looked at and kept, and the time and the memory of a run grow with
/// them: to gigabytes in a camera picture at 0 and below, where every place of every turn is good enough. Exceptions of
/// OpenCV (for pictures of other types) and of conversions (for parameters that are no numbers) reach the caller.
/// Notices go to standard output and standard error.
class IntelligentFilling : public Algorithm {
public:
    IntelligentFilling();
    ~IntelligentFilling() override;
    int Execute(const cv::Mat& source, cv::Mat& destination) override;
};

}  // namespace Quorvane
