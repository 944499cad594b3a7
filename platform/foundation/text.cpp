// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/foundation/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace clipheave::platform {
namespace {

bool isAsciiDigit(char32_t c) {
    return c >= U'0' && c <= U'9';
}

QStringView withoutLeadingBlanks(QStringView text) {
    while (!text.isEmpty() && text.front().isSpace())
        text = text.sliced(1);
    return text;
}

/// The ASCII characters of the longest prefix that is a number: sign, digits, ".", exponent. An
/// exponent counts only with digits of its own; empty without any digit.
std::string numberPrefix(QStringView text) {
    std::string prefix;
    qsizetype i = 0;
    const auto at = [&](qsizetype k) { return k < text.size() ? text[k].unicode() : u'\0'; };
    const auto takeDigits = [&] {
        const qsizetype start = i;
        for (; isAsciiDigit(at(i)); ++i)
            prefix += static_cast<char>(at(i));
        return i - start;
    };
    if (at(i) == u'-' || at(i) == u'+') {
        if (at(i++) == u'-') // std::from_chars knows no plus
            prefix += '-';
    }
    qsizetype digits = takeDigits();
    if (at(i) == u'.') {
        ++i;
        prefix += '.';
        digits += takeDigits();
    }
    if (digits == 0)
        return {};
    if (at(i) == u'e' || at(i) == u'E') {
        const bool hasSign = at(i + 1) == u'-' || at(i + 1) == u'+';
        const qsizetype firstDigit = i + (hasSign ? 2 : 1);
        if (isAsciiDigit(at(firstDigit))) {
            prefix += 'e';
            if (hasSign)
                prefix += static_cast<char>(at(i + 1));
            i = firstDigit;
            takeDigits();
        }
    }
    return prefix;
}

char32_t codePointAt(QStringView text, qsizetype& i) {
    const QChar first = text[i++];
    if (first.isHighSurrogate() && i < text.size() && text[i].isLowSurrogate())
        return QChar::surrogateToUcs4(first, text[i++]);
    return first.unicode();
}

/// The digit run at `i` without its leading zeros; `i` moves behind it.
QStringView takeDigitRun(QStringView text, qsizetype& i) {
    const auto isDigit = [&](qsizetype k) {
        return k < text.size() && isAsciiDigit(text[k].unicode());
    };
    while (isDigit(i) && text[i] == u'0')
        ++i;
    const qsizetype start = i;
    while (isDigit(i))
        ++i;
    return text.sliced(start, i - start);
}

template <class T> int threeWay(const T& a, const T& b) {
    return a < b ? -1 : b < a ? 1 : 0;
}

int compareDigitRuns(QStringView a, qsizetype& i, QStringView b, qsizetype& j) {
    const QStringView left = takeDigitRun(a, i);
    const QStringView right = takeDigitRun(b, j);
    if (left.size() != right.size())
        return threeWay(left.size(), right.size());
    return threeWay(left.compare(right), 0);
}

} // namespace

std::int32_t intValue(QStringView text) {
    text = withoutLeadingBlanks(text);
    bool negative = false;
    if (!text.isEmpty() && (text.front() == u'-' || text.front() == u'+')) {
        negative = text.front() == u'-';
        text = text.sliced(1);
    }
    constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    std::int64_t value = 0;
    for (const QChar c : text) {
        if (!isAsciiDigit(c.unicode()))
            break;
        value = std::min(kLimit, value * 10 + (c.unicode() - u'0'));
    }
    return static_cast<std::int32_t>(negative ? -value : std::min(value, kLimit - 1));
}

double doubleValue(QStringView text) {
    const std::string prefix = numberPrefix(withoutLeadingBlanks(text));
    if (prefix.empty())
        return 0;
    double value = 0;
    const auto [end, error] = std::from_chars(prefix.data(), prefix.data() + prefix.size(), value);
    if (error == std::errc::result_out_of_range) { // too large and too small alike
        static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
        return ::strtod_l(prefix.c_str(), nullptr, plain);
    }
    return value;
}

QString describeNumber(double value) {
    if (std::isnan(value))
        return QStringLiteral("nan");
    if (std::isinf(value))
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
    if (value == 0)
        return QStringLiteral("0");
    constexpr double kExactIntegers = 9007199254740992.0; // 2^53
    std::array<char, 64> buffer{};
    const auto result =
        std::abs(value) <= kExactIntegers && std::trunc(value) == value
            ? std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::llround(value))
            : std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return QString::fromLatin1(buffer.data(), result.ptr - buffer.data());
}

QString plainDecimals(double value) {
    if (!std::isfinite(value) || value == 0)
        return describeNumber(value);
    std::array<char, 400> buffer{}; // the longest: the smallest double, 324 decimals
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed);
    return QString::fromLatin1(buffer.data(), result.ptr - buffer.data());
}

int compareNumeric(QStringView a, QStringView b, bool caseInsensitive) {
    qsizetype i = 0;
    qsizetype j = 0;
    while (i < a.size() && j < b.size()) {
        if (isAsciiDigit(a[i].unicode()) && isAsciiDigit(b[j].unicode())) {
            if (const int order = compareDigitRuns(a, i, b, j))
                return order;
            continue;
        }
        char32_t left = codePointAt(a, i);
        char32_t right = codePointAt(b, j);
        if (caseInsensitive) {
            left = QChar::toCaseFolded(left);
            right = QChar::toCaseFolded(right);
        }
        if (left != right)
            return threeWay(left, right);
    }
    return threeWay(a.size() - i, b.size() - j);
}

} // namespace clipheave::platform
