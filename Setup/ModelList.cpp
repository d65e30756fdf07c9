// SPDX-License-Identifier: MIT
#include "Setup/ModelList.h"

#include "Platform/Json/Json.h"
#include "Setup/SetupError.h"
#include "Setup/TrustedAddress.h"

#include <QFile>
#include <QRegularExpression>

#include <algorithm>

namespace setup {

using namespace Qt::StringLiterals;

namespace {

/// What a list may not say; thrown with the end of a sentence about it.
void require(bool isAsExpected, const QString& otherwise) {
    if (!isAsExpected)
        throw SetupError(otherwise);
}

ModelOffer readOffer(const platform::Json& entry) {
    ModelOffer offer;
    offer.name = entry["name"].text();
    require(!offer.name.trimmed().isEmpty(), u"a model has no name"_s);
    offer.licence = entry["licence"].text();
    offer.size = entry["size"].integer();
    require(offer.size > 0, u"the size of %1 is not one"_s.arg(offer.name));
    offer.address = QUrl(entry["address"].text(), QUrl::StrictMode);
    require(isTrusted(offer.address), u"the address of %1 is not a secure one"_s.arg(offer.name));
    const QString sha256 = entry["sha256"].text().toLower();
    static const QRegularExpression digits(u"^[0-9a-f]{64}$"_s);
    require(digits.match(sha256).hasMatch(), u"the checksum of %1 is not one"_s.arg(offer.name));
    offer.sha256 = sha256.toLatin1();
    const qint64 memory = entry["machineMemory"].integer();
    require(memory >= 0, u"the memory for %1 is not one"_s.arg(offer.name));
    offer.machineMemory = static_cast<quint64>(memory);
    return offer;
}

} // namespace

QList<ModelOffer> readModelList(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw SetupError(u"The list of models, %1, cannot be read."_s.arg(path));
    QList<ModelOffer> offers;
    try {
        const auto list = platform::Json::read(file.readAll());
        for (const platform::Json& entry : list["models"].elements())
            offers.append(readOffer(entry));
        require(!offers.isEmpty(), u"it is empty"_s);
    } catch (const platform::JsonReadingError&) {
        throw SetupError(
            u"The list of models, %1, is damaged: it is not in the expected format."_s.arg(path));
    } catch (const SetupError& error) {
        throw SetupError(
            u"The list of models, %1, is damaged: %2."_s.arg(path, error.errorDescription()));
    }
    std::ranges::stable_sort(offers, {}, &ModelOffer::size);
    return offers;
}

qsizetype recommendedOffer(const QList<ModelOffer>& offers, quint64 machineMemory) {
    for (qsizetype index = offers.size(); index-- > 0;)
        if (offers.at(index).machineMemory <= machineMemory)
            return index;
    return 0;
}

std::optional<qsizetype> findOffer(const QList<ModelOffer>& offers, const QString& name) {
    if (name == u"small")
        return 0;
    if (name == u"large")
        return offers.size() - 1;
    for (qsizetype index = 0; index < offers.size(); ++index)
        if (offers.at(index).name.compare(name, Qt::CaseInsensitive) == 0)
            return index;
    return std::nullopt;
}

} // namespace setup
