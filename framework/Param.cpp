#include "framework/Param.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "TruncateToInt.h"
#include "framework/NumberText.h"

namespace Quorvane {

namespace {

// One element read as `To`. Each pair of kinds has its own line in these overloads and nowhere else.

template <typename To>
To Convert(int value) {
    return static_cast<To>(value);
}

template <typename To>
To Convert(float value) {
    return static_cast<To>(value);
}
template <>
int Convert<int>(float value) {
    return TruncateToInt(value);
}

template <typename To>
To Convert(double value) {
    return static_cast<To>(value);
}
template <>
int Convert<int>(double value) {
    return TruncateToInt(value);
}

template <typename To>
To Convert(const std::string& text);
template <>
int Convert<int>(const std::string& text) {
    return ReadInt(text);
}
template <>
float Convert<float>(const std::string& text) {
    return ReadFloat(text);
}
template <>
double Convert<double>(const std::string& text) {
    return ReadDouble(text);
}
template <>
std::string Convert<std::string>(const std::string& text) {
    return text;
}
template <>
std::string Convert<std::string>(int value) {
    return std::to_string(value);
}
template <>
std::string Convert<std::string>(float value) {
    return FixedText(value);
}
template <>
std::string Convert<std::string>(double value) {
    return FixedText(value);
}

template <typename To, typename From>
std::vector<To> ConvertAll(const std::vector<From>& values) {
    std::vector<To> result;
    result.reserve(values.size());
    for (const From& value : values) result.push_back(Convert<To>(value));
    return result;
}

template <typename To, typename From>
To ConvertFirst(const std::vector<From>& values) {
    return values.empty() ? To{} : Convert<To>(values.front());
}

/// "[a, b, ]": hosts parse these texts and count on the separator behind the last element.
template <typename From>
std::string Bracketed(const std::vector<From>& values) {
    std::string text = "[";
    for (const From& value : values) {
        text += Convert<std::string>(value);
        text += ", ";
    }
    text += "]";
    return text;
}

}  // namespace

/// Picks the member that a parameter's kind names.
class ParamConversion {
public:
    template <typename To>
    static To Scalar(const Param& param) {
        switch (param.kind_) {
            case Param::Int: return Convert<To>(param.number_.asInt);
            case Param::Float: return Convert<To>(param.number_.asFloat);
            case Param::Double: return Convert<To>(param.number_.asDouble);
            case Param::String: return Convert<To>(param.text_);
            case Param::IntVec: return ConvertFirst<To>(param.ints_);
            case Param::FloatVec: return ConvertFirst<To>(param.floats_);
            case Param::DoubleVec: return ConvertFirst<To>(param.doubles_);
            case Param::StringVec: return ConvertFirst<To>(param.texts_);
            case Param::Unset: break;
        }
        return To{};
    }

    template <typename To>
    static std::vector<To> List(const Param& param) {
        switch (param.kind_) {
            case Param::IntVec: return ConvertAll<To>(param.ints_);
            case Param::FloatVec: return ConvertAll<To>(param.floats_);
            case Param::DoubleVec: return ConvertAll<To>(param.doubles_);
            case Param::StringVec: return ConvertAll<To>(param.texts_);
            case Param::Unset: return {};
            default: return {Scalar<To>(param)};
        }
    }
};

Param::Param() = default;
Param::Param(int value) { Set(value); }
Param::Param(float value) { Set(value); }
Param::Param(double value) { Set(value); }
Param::Param(const std::string& value) { Set(value); }
Param::Param(const std::vector<int>& value) { Set(value); }
Param::Param(const std::vector<float>& value) { Set(value); }
Param::Param(const std::vector<double>& value) { Set(value); }
Param::Param(const std::vector<std::string>& value) { Set(value); }

Param::Param(const Param& other) = default;
Param& Param::operator=(const Param& other) {
    if (this == &other) return *this;
    // Copied aside first: where memory runs out, this value stays as it was.
    Param copy(other);
    number_ = copy.number_;
    kind_ = copy.kind_;
    text_.swap(copy.text_);
    ints_.swap(copy.ints_);
    floats_.swap(copy.floats_);
    doubles_.swap(copy.doubles_);
    texts_.swap(copy.texts_);
    return *this;
}

Param::~Param() = default;

void Param::Set(int value) {
    number_.asInt = value;
    kind_ = Int;
}

void Param::Set(float value) {
    number_.asFloat = value;
    kind_ = Float;
}

void Param::Set(double value) {
    number_.asDouble = value;
    kind_ = Double;
}

void Param::Set(const std::string& value) {
    text_ = value;
    kind_ = String;
}

void Param::Set(const std::vector<int>& value) {
    ints_ = value;
    kind_ = IntVec;
}

void Param::Set(const std::vector<float>& value) {
    floats_ = value;
    kind_ = FloatVec;
}

void Param::Set(const std::vector<double>& value) {
    doubles_ = value;
    kind_ = DoubleVec;
}

void Param::Set(const std::vector<std::string>& value) {
    texts_ = value;
    kind_ = StringVec;
}

int Param::ToInt() const { return ParamConversion::Scalar<int>(*this); }
float Param::ToFloat() const { return ParamConversion::Scalar<float>(*this); }
double Param::ToDouble() const { return ParamConversion::Scalar<double>(*this); }

std::string Param::ToString() const {
    switch (kind_) {
        case IntVec: return Bracketed(ints_);
        case FloatVec: return Bracketed(floats_);
        case DoubleVec: return Bracketed(doubles_);
        case StringVec: return Bracketed(texts_);
        default: return ParamConversion::Scalar<std::string>(*this);
    }
}

std::vector<int> Param::ToIntVec() const { return ParamConversion::List<int>(*this); }
std::vector<float> Param::ToFloatVec() const { return ParamConversion::List<float>(*this); }
std::vector<double> Param::ToDoubleVec() const { return ParamConversion::List<double>(*this); }
std::vector<std::string> Param::ToStringVec() const { return ParamConversion::List<std::string>(*this); }

std::size_t Param::ArraySize() const {
    switch (kind_) {
        case IntVec: return ints_.size();
        case FloatVec: return floats_.size();
        case DoubleVec: return doubles_.size();
        case StringVec: return texts_.size();
        default: return 0;
    }
}

void Param::CheckType(ValueType expected) const {
    if (expected != kind_) throw std::runtime_error("Type mismatch: Cannot convert to the expected type.");
}

}  // namespace Quorvane
