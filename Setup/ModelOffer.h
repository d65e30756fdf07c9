// SPDX-License-Identifier: MIT
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

namespace setup {

/// A model that can be fetched, as the list of models describes it.
struct ModelOffer {
    QString name;
    QString licence;
    qint64 size = 0;           ///< of the file, in bytes
    QUrl address;              ///< where the file is fetched from
    QByteArray sha256;         ///< of the file, 64 hexadecimal digits in lower case
    quint64 machineMemory = 0; ///< the least memory of a machine that it suits, in bytes

    friend bool operator==(const ModelOffer&, const ModelOffer&) = default;
};

} // namespace setup
