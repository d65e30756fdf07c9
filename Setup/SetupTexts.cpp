// SPDX-License-Identifier: MIT
#include "Setup/SetupTexts.h"

#include <QStringList>

#include <algorithm>
#include <cmath>

namespace setup::texts {

namespace {

constexpr qint64 kilo = 1000;
constexpr qint64 mega = 1000 * kilo;
constexpr qint64 giga = 1000 * mega;

/// What a size is counted in.
struct Unit {
    qint64 bytes;
    int decimals;
    QLatin1String name;
};

Unit unitOf(qint64 bytes) {
    if (bytes >= giga - 50 * mega) // what would be "1000 MB"
        return {giga, 1, "GB"_L1};
    return bytes >= mega ? Unit{mega, 0, "MB"_L1} : Unit{kilo, 0, "kB"_L1};
}

QString number(double value, int decimals) {
    return QString::number(value, 'f', decimals);
}

QString inUnit(qint64 bytes, const Unit& unit) {
    return number(static_cast<double>(bytes) / static_cast<double>(unit.bytes), unit.decimals);
}

QString parts(const QStringList& all) {
    return all.join(u" · "_s);
}

QString about(qint64 count, const QString& one, const QString& many) {
    return count == 1 ? u"about %1 left"_s.arg(one) : u"about %1 %2 left"_s.arg(count).arg(many);
}

} // namespace

QString size(qint64 bytes) {
    const auto unit = unitOf(bytes);
    return inUnit(bytes, unit) + u' ' + unit.name;
}

QString part(qint64 received, qint64 whole) {
    const auto unit = unitOf(whole);
    const qint64 step = unit.decimals > 0 ? unit.bytes / 10 : unit.bytes;
    const qint64 shown = received >= whole ? whole : received / step * step;
    return u"%1 of %2"_s.arg(inUnit(shown, unit), size(whole));
}

QString rate(qint64 bytesPerSecond) {
    auto unit = unitOf(std::max(bytesPerSecond, kilo));
    if (unit.bytes == mega && bytesPerSecond < 10 * mega)
        unit.decimals = 1;
    return inUnit(std::max(bytesPerSecond, kilo), unit) + u' ' + unit.name + "/s"_L1;
}

QString timeLeft(qint64 seconds) {
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    if (seconds < 10)
        return u"a few seconds left"_s;
    if (seconds < minute)
        return u"less than a minute left"_s;
    if (seconds < 59 * minute + minute / 2)
        return about((seconds + minute / 2) / minute, u"a minute"_s, u"minutes"_s);
    if (seconds < 24 * hour)
        return about(std::max<qint64>((seconds + hour / 2) / hour, 1), u"an hour"_s, u"hours"_s);
    return u"more than a day left"_s;
}

QString progress(qint64 received, qint64 whole, qint64 bytesPerSecond) {
    QStringList all{part(received, whole)};
    if (bytesPerSecond > 0)
        all += {rate(bytesPerSecond), timeLeft((whole - received) / bytesPerSecond)};
    return parts(all);
}

QString spokenProgress(qint64 received, qint64 whole) {
    const qint64 tenths = whole > 0 ? received / std::max<qint64>(whole / 10, 1) : 0;
    return u"Fetching, %1 per cent"_s.arg(std::clamp<qint64>(tenths, 0, 10) * 10);
}

QString paused(qint64 received, qint64 whole) {
    return parts({u"Paused"_s, part(received, whole)});
}

QString details(const ModelOffer& offer) {
    QStringList all{size(offer.size), offer.licence};
    if (offer.machineMemory > 0)
        all += u"for %1 GB of memory or more"_s.arg(
            std::llround(static_cast<double>(offer.machineMemory) / static_cast<double>(giga)));
    return parts(all);
}

QString origin(const ModelOffer& offer, const QString& folder, qint64 room, const QString& home) {
    return u"From %1 into %2, where %3 are free."_s.arg(offer.address.host(),
                                                        shortPath(folder, home), size(room));
}

QString keptIn(const QString& folder, const QString& home) {
    return u"Kept in %1."_s.arg(shortPath(folder, home));
}

QString tooLittleRoom(qint64 missing, qint64 room) {
    return u"There is too little room for it: %1 are needed, and %2 are free."_s.arg(size(missing),
                                                                                     size(room));
}

QString shortPath(const QString& path, const QString& home) {
    if (!home.isEmpty() && (path == home || path.startsWith(home + u'/')))
        return u'~' + path.mid(home.size());
    return path;
}

QString withShortPaths(QString sentence, const QString& home) {
    return home.size() < 2 ? sentence : sentence.replace(u' ' + home + u'/', u" ~/"_s);
}

} // namespace setup::texts
