#pragma once

#include "examples/demo/Report.h"

namespace Demo {

/// Each section runs one capability of the library on pictures and reports what came out. A section has a source of
/// its own name; Main.cpp lists them in the order of the page.
void LaserDotsSection(Report& report);
void MarkPointsSection(Report& report);
void ShapeMatcherSection(Report& report);
void FillingSection(Report& report);
void ImageOperatorsSection(Report& report);
void ChangeDetectionSection(Report& report);
void MeasurementsSection(Report& report);
void CameraLensSection(Report& report);
void CameraBoardsSection(Report& report);
void CameraMapSection(Report& report);
void TwoCamerasSection(Report& report);
void ScaleAndCrossSection(Report& report);

}  // namespace Demo
