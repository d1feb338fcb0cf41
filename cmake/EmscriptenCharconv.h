#pragma once

// std::to_chars and std::from_chars of double for Emscripten, whose standard library lacks them (to_chars before its
// version 14, from_chars before 20): same texts, same values, several times slower. Every source of ours includes it
// first, see Flags.cmake. snprintf and strtod may be used: WebAssembly's C library rounds exactly and knows no locales.

#include <charconv>

#if defined(_LIBCPP_VERSION) && _LIBCPP_VERSION < 200000

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace std { // deliberate: what the standard has there

#if _LIBCPP_VERSION < 14000

inline to_chars_result fcurvelib_print(char* first, char* last, const char* format, int precision, double value) {
    char text[1100]; // 309 digits before the point
    const int length = snprintf(text, sizeof text, format, precision < 700 ? precision : 700, value);
    if (length > last - first) return {last, errc::value_too_large};
    memcpy(first, text, static_cast<size_t>(length));
    return {first + length, errc()};
}

// Fixed or general, the only formats that the library asks for.
inline to_chars_result to_chars(char* first, char* last, double value, chars_format format, int precision) {
    return fcurvelib_print(first, last, format == chars_format::fixed ? "%.*f" : "%.*g", precision, value);
}

// The shortest text that reads back to the same value; of several the nearest, and fixed rather than scientific.
inline to_chars_result to_chars(char* first, char* last, double value) {
    if (!isfinite(value) || value == 0.0) return fcurvelib_print(first, last, "%.*g", 6, value);
    const bool negative = signbit(value);
    const double magnitude = fabs(value);

    // d.ddde+XX with as few digits as will do. Fifteen hold every text of fifteen, but for subnormal numbers.
    char text[40];
    int digits = magnitude < 0x1p-1022 ? 1 : 15;
    for (; digits <= 17; ++digits) {
        snprintf(text, sizeof text, "%.*e", digits - 1, magnitude);
        if (strtod(text, nullptr) == magnitude) break;
        // Below a power of two numbers are twice as close: there the nearest text may miss, and the next one hit.
        int exponent = 0;
        if (digits != 16 || frexp(magnitude, &exponent) != 0.5 || text[digits] == '9') continue;
        ++text[digits];
        if (strtod(text, nullptr) == magnitude) break;
    }
    const char* const e = strchr(text, 'e');
    const int exponent = atoi(e + 1);
    string mantissa(1, text[0]);
    if (digits > 1) mantissa.append(text + 2, static_cast<size_t>(e - text - 2));
    mantissa.erase(mantissa.find_last_not_of('0') + 1);

    const int count = static_cast<int>(mantissa.size());
    const bool whole = exponent >= count - 1;
    const int fixed = whole ? exponent + 1 : exponent >= 0 ? count + 1 : count + 1 - exponent;
    const int scientific = count + (count > 1 ? 1 : 0) + static_cast<int>(strlen(e));
    string result(negative ? 1 : 0, '-');
    if (fixed > scientific) {
        result += mantissa[0];
        if (count > 1) result.append(1, '.').append(mantissa, 1, string::npos);
        result += e;
    } else if (whole) { // all digits of a large integer, not zeros
        return fcurvelib_print(first, last, "%.*f", 0, value);
    } else if (exponent >= 0) {
        result.append(mantissa, 0, static_cast<size_t>(exponent) + 1).append(1, '.');
        result.append(mantissa, static_cast<size_t>(exponent) + 1, string::npos);
    } else {
        result.append("0.").append(static_cast<size_t>(-exponent - 1), '0').append(mantissa);
    }
    if (static_cast<ptrdiff_t>(result.size()) > last - first) return {last, errc::value_too_large};
    memcpy(first, result.data(), result.size());
    return {first + result.size(), errc()};
}

#endif

// No white space, no plus sign, no hexadecimal digits, no infinity: the library asks for none of these.
inline from_chars_result from_chars(const char* first, const char* last, double& value) {
    const auto digits = [last](const char* at) {
        while (at != last && *at >= '0' && *at <= '9') ++at;
        return at;
    };
    const char* const number = first != last && *first == '-' ? first + 1 : first;
    const char* end = digits(number);
    ptrdiff_t count = end - number;
    if (end != last && *end == '.') {
        const char* const point = end;
        end = digits(point + 1);
        count += end - point - 1;
    }
    if (count == 0) return {first, errc::invalid_argument};
    if (end != last && (*end == 'e' || *end == 'E')) {
        const char* exponent = end + 1;
        if (exponent != last && (*exponent == '-' || *exponent == '+')) ++exponent;
        if (const char* const after = digits(exponent); after != exponent) end = after;
    }
    const string text(first, end);
    const double result = strtod(text.c_str(), nullptr);
    const bool isZero = text.find_first_of("123456789") >= text.find_first_of("eE");
    if (isinf(result) || (result == 0.0 && !isZero)) return {end, errc::result_out_of_range};
    value = result;
    return {end, errc()};
}

} // namespace std

#endif
