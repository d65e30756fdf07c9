// SPDX-License-Identifier: MIT
#include "Setup/Amounts.h"

#include <QStringList>

#include <array>

namespace setup {

using namespace Qt::StringLiterals;

QString sizeText(qint64 bytes) {
    constexpr double gigabyte = 1e9;
    constexpr double megabyte = 1e6;
    const auto size = static_cast<double>(bytes);
    return size >= gigabyte ? u"%1 GB"_s.arg(size / gigabyte, 0, 'f', 1)
                            : u"%1 MB"_s.arg(size / megabyte, 0, 'f', 0);
}

QString timeLeftText(std::chrono::seconds time) {
    struct Unit {
        qint64 seconds;
        QLatin1String name;
    };
    constexpr std::array units{Unit{3'600, QLatin1String("hour")},
                               Unit{60, QLatin1String("minute")}, Unit{1, QLatin1String("second")}};
    const qint64 left = std::max<qint64>(time.count(), 1);
    for (const Unit& unit : units) {
        // Rounded up, and by the smaller unit below two of the larger: 100 seconds, 90 minutes.
        if (left < 2 * unit.seconds && unit.seconds > 1)
            continue;
        const qint64 count = (left + unit.seconds - 1) / unit.seconds;
        return u"%1 %2%3 left"_s.arg(count).arg(unit.name, QLatin1String(count == 1 ? "" : "s"));
    }
    Q_UNREACHABLE();
}

QString progressText(qint64 received, qint64 size, qint64 rate) {
    QStringList parts{u"%1 %"_s.arg(received * 100 / std::max<qint64>(size, 1)),
                      u"%1 of %2"_s.arg(sizeText(received), sizeText(size))};
    if (rate > 0) {
        parts.append(sizeText(rate) + u"/s"_s);
        parts.append(timeLeftText(std::chrono::seconds((size - received) / rate)));
    }
    return parts.join(u", "_s);
}

} // namespace setup
