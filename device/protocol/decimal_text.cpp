#include "device/protocol/decimal_text.h"

#include <charconv>
#include <limits>
#include <string>
#include <system_error>

#include "device/protocol/ascii_text.h"

namespace ozdk {
namespace {

template <typename Char>
int32_t ReadIntegerOf(const Char* text) {
    if (text == nullptr) return 0;
    const Char* p = text;
    while (IsAsciiBlank(static_cast<uint32_t>(p[0]))) ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') negative = (*p++ == '-');
    // Accumulate the magnitude up to one past INT32_MAX, which is enough to tell a
    // saturated result from INT32_MIN itself.
    constexpr int64_t kCeiling = int64_t{std::numeric_limits<int32_t>::max()} + 1;
    int64_t magnitude = 0;
    for (; IsAsciiDigit(static_cast<uint32_t>(*p)); ++p) {
        magnitude = magnitude * 10 + (static_cast<uint32_t>(*p) - '0');
        if (magnitude > kCeiling) magnitude = kCeiling;
    }
    const int64_t value = negative ? -magnitude : magnitude;
    if (value > std::numeric_limits<int32_t>::max()) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(value);  // -kCeiling is exactly INT32_MIN
}

}  // namespace

int32_t ReadInteger(const char* text) { return ReadIntegerOf(text); }

int32_t ReadInteger(const WideChar* text) { return ReadIntegerOf(text); }

double ReadDecimal(const WideChar* text) {
    if (text == nullptr) return 0.0;
    const WideChar* p = text;
    while (IsAsciiBlank(static_cast<uint32_t>(*p))) ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') negative = (*p++ == '-');

    std::string whole;
    std::string fraction;
    bool hadWholeDigits = false;
    bool nonZeroWhole = false;
    for (; IsAsciiDigit(static_cast<uint32_t>(*p)); ++p) {
        hadWholeDigits = true;
        nonZeroWhole = nonZeroWhole || *p != '0';
        if (nonZeroWhole) whole += static_cast<char>(*p);  // leading zeros carry nothing
    }
    bool hadFractionDigits = false;
    if (*p == '.') {
        for (++p; IsAsciiDigit(static_cast<uint32_t>(*p)); ++p) {
            fraction += static_cast<char>(*p);
            hadFractionDigits = true;
        }
    }
    if (!hadWholeDigits && !hadFractionDigits) return 0.0;

    const std::string digits = (whole.empty() ? "0" : whole) + "." + (fraction.empty() ? "0" : fraction);
    double value = 0.0;
    const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), value,
                                        std::chars_format::fixed);
    if (result.ec == std::errc::result_out_of_range) {
        // Too large, or so small that it is zero for every use here.
        value = nonZeroWhole ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        value = 0.0;
    }
    return negative ? -value : value;
}

int32_t TruncateToInt32(double value) {
    constexpr double kAboveMax = 2147483648.0;    // 2^31
    constexpr double kBelowMin = -2147483649.0;   // -2^31 - 1
    if (!(value > kBelowMin)) return std::numeric_limits<int32_t>::min();
    if (value >= kAboveMax) return std::numeric_limits<int32_t>::max();
    return static_cast<int32_t>(value);
}

bool ReadUnsignedField(const char*& cursor, uint32_t& value) {
    const char* p = cursor;
    while (IsAsciiBlank(static_cast<unsigned char>(*p))) ++p;
    bool negative = false;
    if (*p == '+' || *p == '-') negative = (*p++ == '-');
    if (!IsAsciiDigit(static_cast<unsigned char>(*p))) return false;
    uint32_t magnitude = 0;
    for (; IsAsciiDigit(static_cast<unsigned char>(*p)); ++p) {
        magnitude = magnitude * 10u + static_cast<uint32_t>(*p - '0');
    }
    value = negative ? 0u - magnitude : magnitude;
    cursor = p;
    return true;
}

int ReadDottedNumbers(const char* text, uint32_t* numbers, int count) {
    if (text == nullptr || numbers == nullptr) {
        return 0;
    }
    const char* cursor = text;
    int read = 0;
    while (read < count) {
        if (read > 0) {
            if (*cursor != '.') {
                break;
            }
            ++cursor;
        }
        if (!ReadUnsignedField(cursor, numbers[read])) {
            break;
        }
        ++read;
    }
    return read;
}

}  // namespace ozdk
