// SPDX-License-Identifier: MIT
#include "Platform/Store/Instant.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace platform {

using namespace std::chrono;

namespace {

constexpr Instant earliest = sys_days(year(0) / January / 1);
constexpr Instant latest = sys_days(year(9999) / December / 31) + days(1) - microseconds(1);

/// Takes a text apart from its beginning.
class Reader {
public:
    explicit Reader(QByteArrayView text)
        : m_rest(text) {}

    bool skip(QByteArrayView anyOf) {
        if (m_rest.isEmpty() || !anyOf.contains(m_rest.front()))
            return false;
        m_rest = m_rest.sliced(1);
        return true;
    }

    /// A number of exactly so many digits.
    std::optional<int> number(qsizetype digits) {
        if (m_rest.size() < digits)
            return std::nullopt;
        int value = 0;
        for (const char digit : m_rest.first(digits)) {
            if (digit < '0' || digit > '9')
                return std::nullopt;
            value = value * 10 + (digit - '0');
        }
        m_rest = m_rest.sliced(digits);
        return value;
    }

    bool isAtEnd() const { return m_rest.isEmpty(); }

private:
    QByteArrayView m_rest;
};

std::optional<microseconds> readFraction(Reader& text) {
    microseconds fraction{0};
    int unit = 100000;
    int digits = 0;
    while (const auto digit = text.number(1)) {
        fraction += microseconds(*digit * unit);
        unit /= 10;
        ++digits;
    }
    if (digits < 1 || digits > 9)
        return std::nullopt;
    return fraction;
}

} // namespace

Instant currentInstant() {
    return floor<microseconds>(system_clock::now());
}

Instant laterThan(Instant previous, Instant now) {
    return std::max(now, previous + microseconds(1));
}

QByteArray toIsoText(Instant instant) {
    const Instant shown = std::clamp(instant, earliest, latest);
    const auto day = floor<days>(shown);
    const year_month_day date(day);
    const hh_mm_ss time(shown - day);
    std::array<char, 64> text{};
    const int size = std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ",
                                   int(date.year()), unsigned(date.month()), unsigned(date.day()),
                                   int(time.hours().count()), int(time.minutes().count()),
                                   int(time.seconds().count()), int(time.subseconds().count()));
    return QByteArray(text.data(), size);
}

std::optional<Instant> instantFromIsoText(QByteArrayView text) {
    Reader reader(text);
    const auto yearNumber = reader.number(4);
    const bool dash1 = reader.skip("-");
    const auto monthNumber = reader.number(2);
    const bool dash2 = reader.skip("-");
    const auto dayNumber = reader.number(2);
    const bool separator = reader.skip("T ");
    const auto hour = reader.number(2);
    const bool colon1 = reader.skip(":");
    const auto minute = reader.number(2);
    const bool colon2 = reader.skip(":");
    const auto second = reader.number(2);
    if (!(yearNumber && dash1 && monthNumber && dash2 && dayNumber && separator && hour && colon1 &&
          minute && colon2 && second))
        return std::nullopt;
    std::optional<microseconds> fraction(0);
    if (reader.skip("."))
        fraction = readFraction(reader);
    reader.skip("Z");
    const year_month_day date{year(*yearNumber), month(unsigned(*monthNumber)),
                              day(unsigned(*dayNumber))};
    if (!fraction || !reader.isAtEnd() || !date.ok() || *hour > 23 || *minute > 59 || *second > 59)
        return std::nullopt;
    return sys_days(date) + hours(*hour) + minutes(*minute) + seconds(*second) + *fraction;
}

} // namespace platform
