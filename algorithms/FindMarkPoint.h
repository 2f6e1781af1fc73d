#pragma once

#include <opencv2/core/mat.hpp>

#include "framework/Algorithm.h"

namespace Quorvane {

/// Finds round mark points of a known radius, rates them, orders them and draws them.
///
/// Reached by name through `AlgorithmFactory`.
///
///     algorithm->SetParameter("Radius", 24);
///     algorithm->SetParameter("SimilarityMin", 0.7f);
///     algorithm->SetParameter("SortMode", "Similarity_Descendingorder");
///     if (algorithm->Execute(picture, marked) == 0) x = algorithm->GetResultValues("MarkPoint_X");
///
/// | Parameter       | Kind   | Default                          | Range  | Meaning                                |
/// |-----------------|--------|----------------------------------|--------|----------------------------------------|
/// | "MarkPointType" | String | "Circle"                         |        | "Circle" or "Cross"; else nothing      |
/// | "Radius"        | Int    | 50                               | > 0    | expected radius of a mark in pixels    |
/// | "SimilarityMin" | Float  | 0.85                             | 0 to 1 | least similarity of a mark             |
/// | "SortMode"      | String | "DistToImgCenter_Ascendingorder" |        | order of the results, see below        |
/// | "Width"         | none   | not set                          | >= 1   | width of a cross in pixels             |
/// | "Height"        | none   | not set                          | >= 1   | height of a cross in pixels            |
///
/// A mark's radius may differ from "Radius" by (1 - "SimilarityMin") * "Radius". Any other "MarkPointType" finds
/// nothing and leaves the results alone.
///
/// "SortMode" orders by similarity ("Similarity_Ascendingorder", "Similarity_Descendingorder") or by the distance to
/// the middle of the image ("DistToImgCenter_Ascendingorder", "DistToImgCenter_Descendingorder"). Any other text leaves
/// the marks in the order in which the search accepted them.
///
/// | Result                 | At first | After a run for circles                                          |
/// |------------------------|----------|------------------------------------------------------------------|
/// | "FindCount"            | "0"      | number of marks                                                  |
/// | "MarkPoint_X"          | empty    | column of each centre, in pixels                                 |
/// | "MarkPoint_Y"          | empty    | row of each centre, in pixels                                    |
/// | "MarkPoint_Similarity" | empty    | similarity of each mark, 0 to 1                                  |
/// | "MarkPoint_Radius"     | no entry | radius of each mark as found, in pixels                          |
/// | "AlgorithmErrorMsg"    | ""       | unchanged: a message stays until the next failure replaces it    |
///
/// The destination becomes a copy of the source with each mark drawn in as a dot at its centre and its circle (green
/// and red; both black on one channel). Finding nothing is status 0 with a count of 0.
///
/// | Status | Message                                                       | When                               |
/// |--------|---------------------------------------------------------------|------------------------------------|
/// | 2      | "[FindMarkPoint] SourceImage is invalid!"                     | the source is empty                |
/// | 3      | "[FindMarkPoint] Param(Radius) is invalid!"                   | "Radius" is not above 0            |
/// | 3      | "[FindMarkPoint] Param(iCrossWidth/iCrossHeight) is invalid!" | "Width" or "Height" is below 1     |
///
/// With status 2 the destination stays as it was; with status 3 it is already the copy of the source.
///
/// Of the type "Cross" only the parameters are checked: no cross is searched for, and a run leaves the results alone.
/// Pictures are 8-bit with 1, 3 or 4 channels; for others OpenCV's exception reaches the caller.
class FindMarkPoint : public Algorithm {
public:
    FindMarkPoint();
    ~FindMarkPoint() override;
    int Execute(const cv::Mat& source, cv::Mat& destination) override;
};

}  // namespace Quorvane
