#include "calibration/Inflate.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace Quorvane::CameraCalibration {

namespace {

/// Thrown where the file ends before its content does.
struct CutShort {};

[[noreturn]] void RefuseDamage() { CV_Error(cv::Error::StsParseError, "the compressed file is damaged"); }

/// Bits from the low end of each byte on.
class BitReader {
public:
    BitReader(const std::string& bytes, std::size_t from) : bytes_(bytes), next_(from) {}

    unsigned Byte() {
        if (next_ >= bytes_.size()) throw CutShort();
        return static_cast<unsigned char>(bytes_[next_++]);
    }
    unsigned Bits(int count) {
        unsigned value = 0;
        for (int i = 0; i < count; ++i) {
            if (left_ == 0) {
                byte_ = Byte();
                left_ = bitsPerByte;
            }
            value |= (byte_ & 1u) << i;
            byte_ >>= 1;
            --left_;
        }
        return value;
    }
    unsigned WholeBytes(int count) {
        unsigned value = 0;
        for (int i = 0; i < count; ++i) value |= Byte() << (bitsPerByte * i);
        return value;
    }
    void DropTheRestOfTheByte() { left_ = 0; }
    std::size_t Position() const { return next_; }

private:
    static constexpr int bitsPerByte = 8;
    const std::string& bytes_;
    std::size_t next_;
    unsigned byte_ = 0;
    int left_ = 0;
};

/// A canonical Huffman code, told by the length of each symbol's code word (RFC 1951, 3.2.2).
class HuffmanCode {
public:
    explicit HuffmanCode(const std::vector<int>& lengths) {
        for (const int length : lengths) ++countOf_[static_cast<std::size_t>(length)];
        countOf_[0] = 0;
        std::array<int, longestWord + 1> from{};
        for (std::size_t length = 1; length < longestWord; ++length) from[length + 1] = from[length] + countOf_[length];
        const int symbolCount = from[longestWord] + countOf_[longestWord];
        symbols_.resize(static_cast<std::size_t>(symbolCount));
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            const auto length = static_cast<std::size_t>(lengths[symbol]);
            if (length > 0) symbols_[static_cast<std::size_t>(from[length]++)] = static_cast<int>(symbol);
        }
        RefuseWordsThatDoNotFit();
    }

    bool UsesAllWords() const { return usesAllWords_; }

    int Decode(BitReader& bits) const {
        int word = 0;
        int firstOfLength = 0;
        int before = 0;
        for (std::size_t length = 1; length <= longestWord; ++length) {
            word = 2 * word + static_cast<int>(bits.Bits(1));
            firstOfLength *= 2;
            const int place = word - firstOfLength;
            if (place < countOf_[length]) {
                const int symbol = before + place;
                return symbols_[static_cast<std::size_t>(symbol)];
            }
            before += countOf_[length];
            firstOfLength += countOf_[length];
        }
        RefuseDamage();
    }

private:
    static constexpr std::size_t longestWord = 15;

    /// All words are used, but for a code of one word or of none.
    void RefuseWordsThatDoNotFit() {
        int unused = 1;
        for (std::size_t length = 1; length <= longestWord; ++length) {
            unused = 2 * unused - countOf_[length];
            if (unused < 0) RefuseDamage();
        }
        const bool hasOneShortWord = symbols_.size() == 1 && countOf_[1] == 1;
        usesAllWords_ = unused == 0;
        if (unused > 0 && !hasOneShortWord && !symbols_.empty()) RefuseDamage();
    }

    std::array<int, longestWord + 1> countOf_{};
    std::vector<int> symbols_;
    bool usesAllWords_ = false;
};

constexpr int endOfBlock = 256;
constexpr int firstLengthSymbol = 257;

/// A repeated stretch's length or distance: the least one of each symbol, and how many bits say how much more it is
/// (RFC 1951, 3.2.5).
struct Range {
    unsigned least;
    int extraBits;
};
constexpr std::array<Range, 29> stretchLengths{
    {{3, 0},  {4, 0},  {5, 0},  {6, 0},   {7, 0},   {8, 0},   {9, 0},   {10, 0},  {11, 1}, {13, 1},
     {15, 1}, {17, 1}, {19, 2}, {23, 2},  {27, 2},  {31, 2},  {35, 3},  {43, 3},  {51, 3}, {59, 3},
     {67, 4}, {83, 4}, {99, 4}, {115, 4}, {131, 5}, {163, 5}, {195, 5}, {227, 5}, {258, 0}}};
constexpr std::array<Range, 30> stretchDistances{
    {{1, 0},     {2, 0},     {3, 0},     {4, 0},      {5, 1},      {7, 1},     {9, 2},     {13, 2},
     {17, 3},    {25, 3},    {33, 4},    {49, 4},     {65, 5},     {97, 5},    {129, 6},   {193, 6},
     {257, 7},   {385, 7},   {513, 8},   {769, 8},    {1025, 9},   {1537, 9},  {2049, 10}, {3073, 10},
     {4097, 11}, {6145, 11}, {8193, 12}, {12289, 12}, {16385, 13}, {24577, 13}}};

template <std::size_t Size>
std::size_t ReadRange(BitReader& bits, const std::array<Range, Size>& ranges, int symbol) {
    if (symbol < 0 || static_cast<std::size_t>(symbol) >= Size) RefuseDamage();
    const Range& range = ranges[static_cast<std::size_t>(symbol)];
    return range.least + bits.Bits(range.extraBits);
}

/// What is decompressed so far of all members, with the bounds that it must keep.
struct Output {
    void Append(char byte) {
        if (text.size() >= mostBytes) CV_Error(cv::Error::StsParseError, "the compressed document is too long");
        text.push_back(byte);
    }
    void Repeat(std::size_t distance, std::size_t length) {
        if (distance > text.size() - memberBegins) RefuseDamage();
        for (; length > 0; --length) Append(text[text.size() - distance]);
    }
    std::size_t mostBytes;
    std::string text;
    std::size_t memberBegins = 0;
};

struct BlockCodes {
    HuffmanCode literals;
    HuffmanCode distances;
};

/// The word lengths that the format fixes (RFC 1951, 3.2.6).
BlockCodes FixedCodes() {
    std::vector<int> lengths(288, 8);
    std::fill(lengths.begin() + 144, lengths.begin() + 256, 9);
    std::fill(lengths.begin() + 256, lengths.begin() + 280, 7);
    return {HuffmanCode(lengths), HuffmanCode(std::vector<int>(32, 5))};
}

/// Word lengths, themselves in a Huffman code, whose own word lengths come first (RFC 1951, 3.2.7).
BlockCodes ReadCodes(BitReader& bits) {
    constexpr std::array<std::size_t, 19> order{16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};
    constexpr std::size_t mostLiterals = 286;
    constexpr std::size_t mostDistances = 30;
    const std::size_t literals = bits.Bits(5) + 257;
    const std::size_t distances = bits.Bits(5) + 1;
    const std::size_t told = bits.Bits(4) + 4;
    if (literals > mostLiterals || distances > mostDistances) RefuseDamage();
    std::vector<int> lengthsOfLengths(order.size(), 0);
    for (std::size_t i = 0; i < told; ++i) lengthsOfLengths[order[i]] = static_cast<int>(bits.Bits(3));
    const HuffmanCode lengthCode(lengthsOfLengths);
    if (!lengthCode.UsesAllWords()) RefuseDamage();

    constexpr int repeatLast = 16;
    constexpr int repeatZero = 17;
    std::vector<int> lengths;
    while (lengths.size() < literals + distances) {
        const int symbol = lengthCode.Decode(bits);
        if (symbol < repeatLast) {
            lengths.push_back(symbol);
            continue;
        }
        if (symbol == repeatLast && lengths.empty()) RefuseDamage();
        const int repeated = symbol == repeatLast ? lengths.back() : 0;
        const std::size_t times = symbol == repeatLast   ? 3 + bits.Bits(2)
                                  : symbol == repeatZero ? 3 + bits.Bits(3)
                                                         : 11 + bits.Bits(7);  // a long run of zeros
        lengths.insert(lengths.end(), times, repeated);
    }
    if (lengths.size() != literals + distances || lengths[endOfBlock] == 0) RefuseDamage();
    const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(literals);
    return {HuffmanCode({lengths.begin(), middle}), HuffmanCode({middle, lengths.end()})};
}

void InflateBlock(BitReader& bits, const BlockCodes& codes, Output& output) {
    for (;;) {
        const int symbol = codes.literals.Decode(bits);
        if (symbol == endOfBlock) return;
        if (symbol < endOfBlock) {
            output.Append(static_cast<char>(symbol));
            continue;
        }
        const std::size_t length = ReadRange(bits, stretchLengths, symbol - firstLengthSymbol);
        output.Repeat(ReadRange(bits, stretchDistances, codes.distances.Decode(bits)), length);
    }
}

void CopyStoredBlock(BitReader& bits, Output& output) {
    bits.DropTheRestOfTheByte();
    const unsigned length = bits.WholeBytes(2);
    if (bits.WholeBytes(2) != (length ^ 0xffffu)) RefuseDamage();
    for (unsigned i = 0; i < length; ++i) output.Append(static_cast<char>(bits.Byte()));
}

void InflateBlocks(BitReader& bits, Output& output) {
    enum BlockType : unsigned { stored, fixedCodes, toldCodes };
    bool last = false;
    while (!last) {
        last = bits.Bits(1) == 1;
        switch (bits.Bits(2)) {
            case stored: CopyStoredBlock(bits, output); break;
            case fixedCodes: InflateBlock(bits, FixedCodes(), output); break;
            case toldCodes: InflateBlock(bits, ReadCodes(bits), output); break;
            default: RefuseDamage();
        }
    }
    bits.DropTheRestOfTheByte();
}

/// The check sum of the gzip format.
std::uint32_t Crc32(const char* bytes, std::size_t count) {
    constexpr std::uint32_t polynomial = 0xedb88320u;
    std::uint32_t crc = 0xffffffffu;
    for (std::size_t i = 0; i < count; ++i) {
        crc ^= static_cast<unsigned char>(bytes[i]);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1u) != 0 ? polynomial : 0u);
    }
    return ~crc;
}

void SkipHeader(BitReader& bits, const std::string& file) {
    constexpr unsigned deflate = 8;
    constexpr unsigned checkSum = 2;
    constexpr unsigned extraField = 4;
    constexpr unsigned name = 8;
    constexpr unsigned comment = 16;
    constexpr unsigned reserved = 0xe0;
    const std::size_t begin = bits.Position();
    bits.WholeBytes(2);  // the signature
    const unsigned method = bits.Byte();
    const unsigned flags = bits.Byte();
    if (method != deflate || (flags & reserved) != 0) RefuseDamage();
    bits.WholeBytes(4);  // the time
    bits.WholeBytes(2);  // the compressor's level and system
    if ((flags & extraField) != 0) {
        for (unsigned left = bits.WholeBytes(2); left > 0; --left) bits.Byte();
    }
    for (const unsigned text : {name, comment}) {
        if ((flags & text) == 0) continue;
        while (bits.Byte() != 0) {
        }
    }
    if ((flags & checkSum) != 0) {
        const std::uint32_t sum = Crc32(&file[begin], bits.Position() - begin);
        if (bits.WholeBytes(2) != (sum & 0xffffu)) RefuseDamage();
    }
}

bool BeginsMember(const std::string& file, std::size_t at) { return file.compare(at, 2, "\x1f\x8b") == 0; }

}  // namespace

std::string Inflated(const std::string& file, std::size_t mostBytes) {
    if (!BeginsMember(file, 0)) return file;
    Output output{mostBytes, {}, 0};
    try {
        BitReader bits(file, 0);
        // What follows the last member is not looked at.
        while (bits.Position() < file.size() && BeginsMember(file, bits.Position())) {
            SkipHeader(bits, file);
            output.memberBegins = output.text.size();
            InflateBlocks(bits, output);
            const std::size_t length = output.text.size() - output.memberBegins;
            if (bits.WholeBytes(4) != Crc32(output.text.data() + output.memberBegins, length)) RefuseDamage();
            if (bits.WholeBytes(4) != static_cast<std::uint32_t>(length)) RefuseDamage();
        }
    } catch (const CutShort&) {
        // What has been read of it stands.
    }
    return std::move(output.text);
}

}  // namespace Quorvane::CameraCalibration
