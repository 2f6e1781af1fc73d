#pragma once

#include <string>

namespace Quorvane {

/// A number as every result of this library writes it: "%f", six digits after the point and no exponent.
std::string FixedText(double value);

/// The number at the start of a text, as `std::stoi`, `std::stof` and `std::stod` read it, with exception texts that
/// are the same on every platform (the standard libraries differ in theirs):
/// `std::invalid_argument` "invalid stoi argument", `std::out_of_range` "stoi argument out of range", and so on.
int ReadInt(const std::string& text);
float ReadFloat(const std::string& text);
double ReadDouble(const std::string& text);

}  // namespace Quorvane
