// SPDX-License-Identifier: MIT
#include "Setup/Checksum.h"

#include "Setup/Until.h"

#include <QCryptographicHash>

#include <unistd.h>

#include <thread>

namespace setup {

namespace {

bool hasChecksum(int descriptor, const QByteArray& sha256, const std::stop_token& stop) {
    constexpr qsizetype pieceSize = 1 << 20;
    QByteArray piece(pieceSize, Qt::Uninitialized);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (off_t offset = 0; !stop.stop_requested();) {
        const ssize_t size =
            pread(descriptor, piece.data(), static_cast<size_t>(piece.size()), offset);
        if (size < 0)
            return false;
        if (size == 0)
            return hash.result().toHex() == sha256;
        hash.addData(QByteArrayView(piece).first(size));
        offset += size;
    }
    return false;
}

} // namespace

platform::Task<bool> isWhole(int descriptor, QByteArray sha256) {
    bool isRight = false;
    std::jthread worker;
    Until checked([&](QObject&, const Until::Wake& wake) {
        worker = std::jthread([&isRight, descriptor, sha256, wake](const std::stop_token& stop) {
            isRight = hasChecksum(descriptor, sha256, stop) && fsync(descriptor) == 0;
            wake();
        });
    });
    co_await checked;
    worker.join();
    co_return isRight;
}

} // namespace setup
