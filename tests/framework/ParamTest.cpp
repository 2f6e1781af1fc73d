#include "framework/Param.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <type_traits>

#include "tests/support/Matchers.h"

namespace Quorvane {

using testing::ElementsAre;
using testing::IsEmpty;
using TestSupport::ExpectThrowWithText;

namespace {

using Ints = std::vector<int>;
using Floats = std::vector<float>;
using Doubles = std::vector<double>;
using Texts = std::vector<std::string>;

// Reaches the private check: explicit instantiation may name private members.
using CheckTypeMember = void (Param::*)(Param::ValueType) const;
CheckTypeMember checkType;
template <CheckTypeMember member>
struct Reveal {
    struct Setter {
        Setter() { checkType = member; }
    };
    static Setter setter;
};
template <CheckTypeMember member>
typename Reveal<member>::Setter Reveal<member>::setter;
template struct Reveal<&Param::CheckType>;

TEST(ParamKinds, HaveTheNumbersThatHostsStore) {
    EXPECT_EQ(Param::Int, 0);
    EXPECT_EQ(Param::Float, 1);
    EXPECT_EQ(Param::Double, 2);
    EXPECT_EQ(Param::String, 3);
    EXPECT_EQ(Param::IntVec, 4);
    EXPECT_EQ(Param::FloatVec, 5);
    EXPECT_EQ(Param::DoubleVec, 6);
    EXPECT_EQ(Param::StringVec, 7);
    EXPECT_EQ(Param::Unset, 8);
    EXPECT_EQ(sizeof(Param::ValueType), 4U);
    EXPECT_EQ(Param::ValueType::Double, Param::Double);
}

// Offsets of private members, likewise.
template <typename Member>
struct MemberOf {
    static Member Param::*pointer;
};
template <typename Member>
Member Param::*MemberOf<Member>::pointer = nullptr;
template <typename Member, Member Param::*member>
struct RevealMember {
    struct Setter {
        Setter() { MemberOf<Member>::pointer = member; }
    };
    static Setter setter;
};
template <typename Member, Member Param::*member>
typename RevealMember<Member, member>::Setter RevealMember<Member, member>::setter;
template struct RevealMember<Param::ValueType, &Param::kind_>;
template struct RevealMember<std::string, &Param::text_>;
template struct RevealMember<Ints, &Param::ints_>;
template struct RevealMember<Floats, &Param::floats_>;
template struct RevealMember<Doubles, &Param::doubles_>;
template struct RevealMember<Texts, &Param::texts_>;

template <typename Member>
const Member& Peek(const Param& param) {
    return param.*MemberOf<Member>::pointer;
}

template <typename Member>
std::ptrdiff_t OffsetOf(const Param& param) {
    return reinterpret_cast<const char*>(&Peek<Member>(param)) - reinterpret_cast<const char*>(&param);
}

TEST(ParamLayout, HasItsMembersInTheirOrder) {
    const Param param;
    EXPECT_EQ(OffsetOf<Param::ValueType>(param), 8) << "behind the number of 8 bytes";
    EXPECT_LT(OffsetOf<Param::ValueType>(param), OffsetOf<std::string>(param));
    EXPECT_LT(OffsetOf<std::string>(param), OffsetOf<Ints>(param));
    EXPECT_LT(OffsetOf<Ints>(param), OffsetOf<Floats>(param));
    EXPECT_LT(OffsetOf<Floats>(param), OffsetOf<Doubles>(param));
    EXPECT_LT(OffsetOf<Doubles>(param), OffsetOf<Texts>(param));
}

TEST(ParamSet, LeavesWhatAnEarlierKindHeldAndCopiesIt) {
    Param param(Ints{1, 2, 3});
    param.Set(std::string("9"));
    EXPECT_THAT(Peek<Ints>(param), ElementsAre(1, 2, 3));
    const Param copy(param);
    EXPECT_THAT(Peek<Ints>(copy), ElementsAre(1, 2, 3));
    Param assigned;
    assigned = param;
    EXPECT_THAT(Peek<Ints>(assigned), ElementsAre(1, 2, 3));
    EXPECT_THAT(assigned.ToIntVec(), ElementsAre(9));
}

TEST(ParamLayout, IsTheNumberTheKindTheTextAndFourLists) {
    struct Expected {
        double number;
        std::int32_t kind;
        std::string text;
        Ints ints;
        Floats floats;
        Doubles doubles;
        Texts texts;
    };
    EXPECT_EQ(sizeof(Param), sizeof(Expected));
}

TEST(ParamUnset, ReadsAsZeroAndEmpty) {
    const Param param;
    EXPECT_EQ(param.ToInt(), 0);
    EXPECT_EQ(param.ToFloat(), 0.0f);
    EXPECT_EQ(param.ToDouble(), 0.0);
    EXPECT_EQ(param.ToString(), "");
    EXPECT_THAT(param.ToIntVec(), IsEmpty());
    EXPECT_THAT(param.ToFloatVec(), IsEmpty());
    EXPECT_THAT(param.ToDoubleVec(), IsEmpty());
    EXPECT_THAT(param.ToStringVec(), IsEmpty());
    EXPECT_EQ(param.ArraySize(), 0U);
}

TEST(ParamInt, ReadsAsEveryKind) {
    const Param param(-3);
    EXPECT_EQ(param.ToInt(), -3);
    EXPECT_EQ(param.ToFloat(), -3.0f);
    EXPECT_EQ(param.ToDouble(), -3.0);
    EXPECT_EQ(param.ToString(), "-3");
    EXPECT_THAT(param.ToIntVec(), ElementsAre(-3));
    EXPECT_THAT(param.ToFloatVec(), ElementsAre(-3.0f));
    EXPECT_THAT(param.ToDoubleVec(), ElementsAre(-3.0));
    EXPECT_THAT(param.ToStringVec(), ElementsAre("-3"));
    EXPECT_EQ(param.ArraySize(), 0U);
}

TEST(ParamInt, LargeValueLosesDigitsAsFloatOnly) {
    const Param param(16777217);
    EXPECT_EQ(param.ToFloat(), 16777216.0f);
    EXPECT_EQ(param.ToDouble(), 16777217.0);
}

TEST(ParamFloat, ReadsAsEveryKind) {
    const Param param(0.85f);
    EXPECT_EQ(param.ToInt(), 0);
    EXPECT_EQ(param.ToFloat(), 0.85f);
    EXPECT_EQ(param.ToDouble(), 0.8500000238418579);
    EXPECT_EQ(param.ToString(), "0.850000");
    EXPECT_THAT(param.ToIntVec(), ElementsAre(0));
    EXPECT_THAT(param.ToFloatVec(), ElementsAre(0.85f));
    EXPECT_THAT(param.ToDoubleVec(), ElementsAre(0.8500000238418579));
    EXPECT_THAT(param.ToStringVec(), ElementsAre("0.850000"));
    EXPECT_EQ(param.ArraySize(), 0U);
}

TEST(ParamFloat, TruncatesTowardZero) {
    EXPECT_EQ(Param(-7.9f).ToInt(), -7);
    EXPECT_EQ(Param(7.9f).ToInt(), 7);
}

TEST(ParamDouble, ReadsAsEveryKind) {
    const Param param(-7.9);
    EXPECT_EQ(param.ToInt(), -7);
    EXPECT_EQ(param.ToFloat(), -7.9f);
    EXPECT_EQ(param.ToDouble(), -7.9);
    EXPECT_EQ(param.ToString(), "-7.900000");
    EXPECT_THAT(param.ToIntVec(), ElementsAre(-7));
    EXPECT_THAT(param.ToFloatVec(), ElementsAre(-7.9f));
    EXPECT_THAT(param.ToDoubleVec(), ElementsAre(-7.9));
    EXPECT_THAT(param.ToStringVec(), ElementsAre("-7.900000"));
    EXPECT_EQ(param.ArraySize(), 0U);
}

TEST(ParamDouble, OutOfRangeIsNotDetectedAsInt) {
    EXPECT_EQ(Param(1e20).ToInt(), std::numeric_limits<int>::min());
    EXPECT_EQ(Param(-1e20).ToInt(), std::numeric_limits<int>::min());
    EXPECT_EQ(Param(std::nan("")).ToInt(), std::numeric_limits<int>::min());
    EXPECT_EQ(Param(2147483647.5).ToInt(), 2147483647);
    EXPECT_EQ(Param(-2147483648.5).ToInt(), std::numeric_limits<int>::min());
}

TEST(ParamDouble, IsWrittenWithSixDigitsAndNoExponent) {
    EXPECT_EQ(Param(1.5).ToString(), "1.500000");
    EXPECT_EQ(Param(1e20).ToString(), "100000000000000000000.000000");
    EXPECT_EQ(Param(1e-7).ToString(), "0.000000");
    EXPECT_EQ(Param(-0.0).ToString(), "-0.000000");
    EXPECT_EQ(Param(std::numeric_limits<double>::max()).ToString().size(), 309U + 7U);
}

TEST(ParamText, ReadsAsEveryKind) {
    const Param param(std::string("12.75"));
    EXPECT_EQ(param.ToInt(), 12);
    EXPECT_EQ(param.ToFloat(), 12.75f);
    EXPECT_EQ(param.ToDouble(), 12.75);
    EXPECT_EQ(param.ToString(), "12.75");
    EXPECT_THAT(param.ToIntVec(), ElementsAre(12));
    EXPECT_THAT(param.ToFloatVec(), ElementsAre(12.75f));
    EXPECT_THAT(param.ToDoubleVec(), ElementsAre(12.75));
    EXPECT_THAT(param.ToStringVec(), ElementsAre("12.75"));
    EXPECT_EQ(param.ArraySize(), 0U);
}

TEST(ParamText, TakesTheLongestNumberAtItsStart) {
    EXPECT_EQ(Param(std::string("12abc")).ToInt(), 12);
    EXPECT_EQ(Param(std::string(" \t\n-5 7")).ToInt(), -5);
    EXPECT_EQ(Param(std::string("+8")).ToInt(), 8);
    EXPECT_EQ(Param(std::string("0x1f")).ToInt(), 0);
    EXPECT_EQ(Param(std::string("1.5e2mm")).ToDouble(), 150.0);
    EXPECT_EQ(Param(std::string("1.5e2mm")).ToFloat(), 150.0f);
    EXPECT_EQ(Param(std::string("1.5e2mm")).ToInt(), 1);
}

TEST(ParamText, WithoutNumberThrowsInvalidArgument) {
    for (const std::string text : {"abc", "", "  ", "-", ".x"}) {
        const Param param(text);
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToInt(); }, "invalid stoi argument");
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToFloat(); }, "invalid stof argument");
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToDouble(); }, "invalid stod argument");
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToIntVec(); }, "invalid stoi argument");
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToFloatVec(); }, "invalid stof argument");
        ExpectThrowWithText<std::invalid_argument>([&] { param.ToDoubleVec(); }, "invalid stod argument");
        EXPECT_EQ(param.ToString(), text);
    }
}

TEST(ParamText, OutOfRangeThrows) {
    ExpectThrowWithText<std::out_of_range>([] { Param(std::string("2147483648")).ToInt(); },
                                           "stoi argument out of range");
    ExpectThrowWithText<std::out_of_range>([] { Param(std::string("-99999999999999999999")).ToInt(); },
                                           "stoi argument out of range");
    ExpectThrowWithText<std::out_of_range>([] { Param(std::string("1e39")).ToFloat(); }, "stof argument out of range");
    ExpectThrowWithText<std::out_of_range>([] { Param(std::string("1e309")).ToDouble(); },
                                           "stod argument out of range");
    EXPECT_EQ(Param(std::string("2147483647")).ToInt(), 2147483647);
    EXPECT_EQ(Param(std::string("1e39")).ToDouble(), 1e39);
}

TEST(ParamLists, FirstElementReadsAsScalar) {
    EXPECT_EQ(Param(Ints{4, 5}).ToInt(), 4);
    EXPECT_EQ(Param(Ints{4, 5}).ToFloat(), 4.0f);
    EXPECT_EQ(Param(Ints{4, 5}).ToDouble(), 4.0);
    EXPECT_EQ(Param(Floats{-1.75f, 2.0f}).ToInt(), -1);
    EXPECT_EQ(Param(Floats{-1.75f, 2.0f}).ToFloat(), -1.75f);
    EXPECT_EQ(Param(Floats{0.1f, 2.0f}).ToDouble(), static_cast<double>(0.1f));
    EXPECT_EQ(Param(Doubles{-1.75, 2.0}).ToInt(), -1);
    EXPECT_EQ(Param(Doubles{0.1, 2.0}).ToFloat(), 0.1f);
    EXPECT_EQ(Param(Doubles{0.1, 2.0}).ToDouble(), 0.1);
    EXPECT_EQ(Param(Texts{"7", "x"}).ToInt(), 7);
    EXPECT_EQ(Param(Texts{"7.5", "x"}).ToFloat(), 7.5f);
    EXPECT_EQ(Param(Texts{"7.5", "x"}).ToDouble(), 7.5);
}

TEST(ParamLists, EmptyReadsAsZero) {
    for (const Param& param : {Param(Ints{}), Param(Floats{}), Param(Doubles{}), Param(Texts{})}) {
        EXPECT_EQ(param.ToInt(), 0);
        EXPECT_EQ(param.ToFloat(), 0.0f);
        EXPECT_EQ(param.ToDouble(), 0.0);
        EXPECT_EQ(param.ToString(), "[]");
        EXPECT_THAT(param.ToIntVec(), IsEmpty());
        EXPECT_THAT(param.ToFloatVec(), IsEmpty());
        EXPECT_THAT(param.ToDoubleVec(), IsEmpty());
        EXPECT_THAT(param.ToStringVec(), IsEmpty());
        EXPECT_EQ(param.ArraySize(), 0U);
    }
}

TEST(ParamLists, ConvertElementByElement) {
    EXPECT_THAT(Param(Ints{1, -2}).ToDoubleVec(), ElementsAre(1.0, -2.0));
    EXPECT_THAT(Param(Ints{1, -2}).ToFloatVec(), ElementsAre(1.0f, -2.0f));
    EXPECT_THAT(Param(Ints{1, -2}).ToIntVec(), ElementsAre(1, -2));
    EXPECT_THAT(Param(Floats{1.9f, -1.9f}).ToIntVec(), ElementsAre(1, -1));
    EXPECT_THAT(Param(Floats{0.1f}).ToDoubleVec(), ElementsAre(static_cast<double>(0.1f)));
    EXPECT_THAT(Param(Doubles{1.9, -1.9}).ToIntVec(), ElementsAre(1, -1));
    EXPECT_THAT(Param(Doubles{0.1}).ToFloatVec(), ElementsAre(0.1f));
    EXPECT_THAT(Param(Texts{"1", "2.5"}).ToIntVec(), ElementsAre(1, 2));
    EXPECT_THAT(Param(Texts{"1", "2.5"}).ToFloatVec(), ElementsAre(1.0f, 2.5f));
    EXPECT_THAT(Param(Texts{"1", "2.5"}).ToDoubleVec(), ElementsAre(1.0, 2.5));
    EXPECT_THAT(Param(Ints{1, -2}).ToStringVec(), ElementsAre("1", "-2"));
    EXPECT_THAT(Param(Floats{0.5f}).ToStringVec(), ElementsAre("0.500000"));
    EXPECT_THAT(Param(Doubles{0.5}).ToStringVec(), ElementsAre("0.500000"));
    EXPECT_THAT(Param(Texts{"a", ""}).ToStringVec(), ElementsAre("a", ""));
}

TEST(ParamLists, FirstBadTextEndsTheConversion) {
    const Param param(Texts{"7", "x"});
    ExpectThrowWithText<std::invalid_argument>([&] { param.ToIntVec(); }, "invalid stoi argument");
    ExpectThrowWithText<std::invalid_argument>([&] { param.ToFloatVec(); }, "invalid stof argument");
    ExpectThrowWithText<std::invalid_argument>([&] { param.ToDoubleVec(); }, "invalid stod argument");
    EXPECT_THAT(param.ToStringVec(), ElementsAre("7", "x"));
}

TEST(ParamLists, AreWrittenWithASeparatorBehindEveryElement) {
    EXPECT_EQ(Param(Ints{1, 2}).ToString(), "[1, 2, ]");
    EXPECT_EQ(Param(Ints{1, 2, 3}).ToString(), "[1, 2, 3, ]");
    EXPECT_EQ(Param(Floats{0.85f}).ToString(), "[0.850000, ]");
    EXPECT_EQ(Param(Doubles{1.5, -2.0}).ToString(), "[1.500000, -2.000000, ]");
    EXPECT_EQ(Param(Texts{"a", "b"}).ToString(), "[a, b, ]");
    EXPECT_EQ(Param(Texts{"a, ", "]"}).ToString(), "[a, , ], ]");
}

TEST(ParamArraySize, CountsListsOnly) {
    EXPECT_EQ(Param(Ints{1, 2}).ArraySize(), 2U);
    EXPECT_EQ(Param(Floats{1.0f}).ArraySize(), 1U);
    EXPECT_EQ(Param(Doubles{1.0, 2.0, 3.0}).ArraySize(), 3U);
    EXPECT_EQ(Param(Texts{"a"}).ArraySize(), 1U);
    EXPECT_EQ(Param(5).ArraySize(), 0U);
    EXPECT_EQ(Param(std::string("long text")).ArraySize(), 0U);
}

TEST(ParamSet, ChangesTheKindEveryTime) {
    Param param;
    param.Set(5);
    EXPECT_EQ(param.ToString(), "5");
    param.Set(2.5f);
    EXPECT_EQ(param.ToString(), "2.500000");
    param.Set(3.5);
    EXPECT_EQ(param.ToString(), "3.500000");
    param.Set(std::string("t"));
    EXPECT_EQ(param.ToString(), "t");
    param.Set(Ints{1});
    EXPECT_EQ(param.ToString(), "[1, ]");
    param.Set(Floats{1.0f});
    EXPECT_EQ(param.ToString(), "[1.000000, ]");
    param.Set(Doubles{2.0});
    EXPECT_EQ(param.ToString(), "[2.000000, ]");
    param.Set(Texts{"x"});
    EXPECT_EQ(param.ToString(), "[x, ]");
}

TEST(ParamSet, NoConversionSeesWhatAnEarlierKindLeft) {
    Param param(Ints{1, 2, 3});
    param.Set(std::string("9"));
    EXPECT_EQ(param.ArraySize(), 0U);
    EXPECT_THAT(param.ToIntVec(), ElementsAre(9));
    const Param copy(param);
    EXPECT_THAT(copy.ToIntVec(), ElementsAre(9));
    EXPECT_EQ(copy.ToString(), "9");
}

TEST(ParamCopy, IsAValue) {
    Param a(Ints{1, 2});
    Param b;
    b = a;
    a.Set(7);
    EXPECT_EQ(b.ToString(), "[1, 2, ]");
    EXPECT_EQ(a.ToString(), "7");
    const Param& itself = b;
    b = itself;
    EXPECT_EQ(b.ToString(), "[1, 2, ]");
}

TEST(ParamCheckType, ThrowsUnlessTheKindIsTheOneExpected) {
    const Param param(1.5);
    EXPECT_NO_THROW((param.*checkType)(Param::Double));
    ExpectThrowWithText<std::runtime_error>([&] { (param.*checkType)(Param::Int); },
                                            "Type mismatch: Cannot convert to the expected type.");
    EXPECT_NO_THROW((Param().*checkType)(Param::Unset));
}

}  // namespace
}  // namespace Quorvane
