// SPDX-License-Identifier: MIT
#pragma once

#include "Platform/Desktop/PathTexts.h"
#include "Platform/Desktop/UserDirectories.h"
#include "Setup/ModelOffer.h"
#include "tests/support/Files.h"
#include "tests/support/ScriptedServer.h"

#include <QCryptographicHash>
#include <QTemporaryDir>

namespace tests {

/// A user's folders, a model of 300,000 bytes, and a server on this machine that has it.
struct SetupFixture {
    SetupFixture() {
        using namespace Qt::StringLiterals;
        for (int i = 0; i < 300'000; ++i)
            weights.append(static_cast<char>(i * 7 + i / 251));
        server.listen();
        offer = {.name = u"Small"_s,
                 .licence = u"MIT"_s,
                 .size = weights.size(),
                 .address = QUrl(u"http://127.0.0.1:%1/small.gguf"_s.arg(server.port())),
                 .sha256 = QCryptographicHash::hash(weights, QCryptographicHash::Sha256).toHex(),
                 .machineMemory = 0};
        models = in(u"data/tellwick/models"_s);
    }

    QString in(const QString& path) const { return folder.filePath(path); }

    platform::UserDirectories directories() const {
        return {"tellwick",
                [this](const char* name) -> std::string {
                    const QByteArrayView variable(name);
                    const char* const value = variable == "XDG_DATA_HOME"   ? "data"
                                              : variable == "XDG_DATA_DIRS" ? "system"
                                              : variable == "PATH"          ? "programs"
                                                                            : "run";
                    return platform::toPath(in(QLatin1String(value)));
                },
                platform::toPath(in(QStringLiteral("home")))};
    }

    /// The answer to a request for all from `from` on; it may break off at `to`.
    Script part(qsizetype from, qsizetype to = -1) const {
        const qsizetype size = weights.size();
        QByteArrayList head{"Connection: close",
                            "Content-Length: " + QByteArray::number(size - from)};
        if (from > 0)
            head.append("Content-Range: bytes " + QByteArray::number(from) + '-' +
                        QByteArray::number(size - 1) + '/' + QByteArray::number(size));
        return Script()
            .head(from > 0 ? 206 : 200, head)
            .send(weights.mid(from, to < 0 ? -1 : to - from));
    }

    /// From here on each request is answered as it asks, but cut off after that many bytes. Not all
    /// of them need to have reached who asked.
    void cutOffAfter(qsizetype bytes) {
        server.setAnswer([this, bytes](const RecordedRequest& request) {
            const qsizetype from = request.header("Range")
                                       .mid(QByteArrayView("bytes=").size())
                                       .replace('-', "")
                                       .toLongLong();
            return part(from, from + bytes);
        });
    }

    QByteArray model() const { return bytesOf(models + QStringLiteral("/on-device.gguf")); }
    /// What is in the models' folder besides the model and the lock.
    QStringList leftovers() const {
        QStringList names =
            QDir(models).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
        names.removeAll(QStringLiteral(".lock"));
        names.removeAll(QStringLiteral("on-device.gguf"));
        return names;
    }
    QString partPath() const {
        return models + QStringLiteral("/.%1.part").arg(QLatin1String(offer.sha256.left(16)));
    }
    QByteArray range(int request) const { return server.request(request).header("Range"); }

    QTemporaryDir folder;
    QString models;
    QByteArray weights;
    ScriptedServer server;
    setup::ModelOffer offer;
};

} // namespace tests
