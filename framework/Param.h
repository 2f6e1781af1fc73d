#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "QuorvaneExport.h"

namespace Quorvane {

/// One value of any of eight kinds, readable as any other kind.
///
/// A parameter is written in whichever kind the host has at hand and read in whichever kind the algorithm wants:
///
///     Param radius(50);
///     radius.ToDouble();   // 50.0
///     radius.ToString();   // "50"
///     Param(std::vector<int>{1, 2}).ToString();   // "[1, 2, ]"
///
/// Conversions never fail on account of the kinds. They fail only where a text is to be read as a number:
/// - `std::invalid_argument` ("invalid stoi argument", and likewise stof, stod) when no number stands at its start;
/// - `std::out_of_range` ("stoi argument out of range", and likewise) when the number does not fit.
/// A failed conversion leaves the `Param` as it was.
///
/// Number formats: text is read as by `std::stoi` (base 10), `std::stof` and `std::stod`, so leading white space and
/// whatever follows the number are ignored; integers are written in decimal, floats and doubles through "%f".
/// A float or double read as an integer is truncated toward zero; one that no `int` can hold gives the least `int`.
class QUORVANE_EXPORT Param {
public:
    /// The kind of value held. Hosts store these numbers; they do not change.
    enum ValueType : std::int32_t {
        Int = 0,
        Float = 1,
        Double = 2,
        String = 3,
        IntVec = 4,
        FloatVec = 5,
        DoubleVec = 6,
        StringVec = 7,
        Unset = 8  ///< Nothing was set: reads as 0, an empty text, an empty list.
    };

    /// Of no kind, unset.
    Param();
    ///@{
    /// A parameter of the argument's kind.
    Param(int value);
    Param(float value);
    Param(double value);
    Param(const std::string& value);
    Param(const std::vector<int>& value);
    Param(const std::vector<float>& value);
    Param(const std::vector<double>& value);
    Param(const std::vector<std::string>& value);
    ///@}

    ///@{
    /// The same value and kind as `other`.
    Param(const Param& other);
    Param& operator=(const Param& other);
    ///@}
    ~Param();

    ///@{
    /// Replace the value of the argument's kind and make it the kind of this parameter.
    void Set(int value);
    void Set(float value);
    void Set(double value);
    void Set(const std::string& value);
    void Set(const std::vector<int>& value);
    void Set(const std::vector<float>& value);
    void Set(const std::vector<double>& value);
    void Set(const std::vector<std::string>& value);
    ///@}

    ///@{
    /// The value as a number. Of a list, the first element is taken; an empty list and an unset parameter give 0.
    int ToInt() const;
    float ToFloat() const;
    double ToDouble() const;
    ///@}

    /// The value as a text. A list gives "[a, b, ]": the separator also follows the last element, and an empty list is
    /// "[]".
    std::string ToString() const;

    ///@{
    /// The value as a list. A scalar gives a list of one, an unset parameter an empty list.
    std::vector<int> ToIntVec() const;
    std::vector<float> ToFloatVec() const;
    std::vector<double> ToDoubleVec() const;
    std::vector<std::string> ToStringVec() const;
    ///@}

    /// The number of elements of a list kind; 0 for every other kind, also for a text.
    std::size_t ArraySize() const;

private:
    /// Throws `std::runtime_error` unless `expected` is the kind held. No conversion calls it: it is here because
    /// the shared library exports it.
    void CheckType(ValueType expected) const;

    friend class ParamConversion;  // how the source of this class reads the members

    // Every container exists beside the others; only the one that `kind_` names is looked at. What an earlier kind
    // left in the others is kept, and copied, on purpose: nothing can see it and clearing would cost.
    union Number {
        int asInt;
        float asFloat;
        double asDouble;
    };
    Number number_{};
    ValueType kind_ = Unset;
    std::string text_;
    std::vector<int> ints_;
    std::vector<float> floats_;
    std::vector<double> doubles_;
    std::vector<std::string> texts_;
};

}  // namespace Quorvane
