// SPDX-License-Identifier: MIT
#include "Setup/ModelDownload.h"

#include "Platform/Desktop/PathTexts.h"
#include "Setup/Checksum.h"
#include "Setup/PartFile.h"
#include "Setup/ServerAnswer.h"
#include "Setup/SetupError.h"
#include "Setup/SetupTexts.h"
#include "Setup/TrustedAddress.h"
#include "Setup/Until.h"

#include <QNetworkProxyFactory>
#include <QNetworkReply>
#include <QSslSocket>

#include <memory>

namespace setup {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 readBufferSize = 1 << 20;
constexpr int maximumRedirects = 10;

/// The proxies that the desktop names, but for this machine itself.
class Proxies final : public QNetworkProxyFactory {
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& query) override {
        return isLoopback(query.url()) ? QList{QNetworkProxy(QNetworkProxy::NoProxy)}
                                       : systemProxyForQuery(query);
    }
};

/// Asks for all of the file from that byte on.
QNetworkRequest makeRequest(const QUrl& address, qint64 from) {
    QNetworkRequest request(address);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    // One file: streams beside each other are of no use, and no cookie says who goes on with it.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setRawHeader("User-Agent", "tellwick-setup");
    request.setRawHeader("Accept-Encoding", "identity");
    if (from > 0)
        request.setRawHeader("Range", "bytes=" + QByteArray::number(from) + '-');
    return request;
}

} // namespace

ModelDownload::ModelDownload(ModelFolder folder, const Limits& limits)
    : m_folder(std::move(folder))
    , m_limits(limits) {
    m_network.setProxyFactory(new Proxies); // owned by the manager
}

platform::Task<void> ModelDownload::fetch(ModelOffer offer, Report report) {
    const platform::UniqueFd lock = m_folder.lock();
    PartFile part(m_folder.partPath(offer), offer.size);
    report(ModelPhase::Fetching, part.size());
    if (m_folder.room() < offer.size - part.size())
        throw SetupError(
            u"There is no room for the on-device model: %1 has %2 left. Make room and "
            "try again."_s.arg(platform::toText(m_folder.path()), texts::size(m_folder.room())));

    // A transfer that was cut off is gone on with at once, as long as each brings something.
    while (part.size() < offer.size) {
        const qint64 before = part.size();
        QUrl address = offer.address;
        TransferEnd end = co_await transfer(address, offer.size, part, report);
        for (int redirects = 0; !end.sentOnTo.isEmpty(); ++redirects) {
            if (redirects == maximumRedirects)
                throw SetupError(missingFileSentence());
            if (!mayFollow(address, end.sentOnTo))
                throw SetupError(astraySentence());
            address = end.sentOnTo;
            end = co_await transfer(address, offer.size, part, report);
        }
        if (part.size() <= before)
            throw SetupError(end.sentence);
    }

    report(ModelPhase::Checking, part.size());
    if (!co_await isWhole(part.descriptor(), offer.sha256)) {
        part.clear();
        throw SetupError(u"What was fetched is not the on-device model (wrong checksum) and has "
                         "been deleted. Try again."_s);
    }
    part.moveTo(m_folder.modelPath());
}

/// One request, from where the part ends.
platform::Task<ModelDownload::TransferEnd>
ModelDownload::transfer(QUrl address, qint64 size, PartFile& part, const Report& report) {
    if (address.scheme() == u"https" && !QSslSocket::supportsSsl())
        co_return TransferEnd{sentenceFor(QNetworkReply::SslHandshakeFailedError), {}};
    // None that has just broken is gone on with.
    m_network.clearConnectionCache();
    bool isSent = false;
    const std::unique_ptr<QNetworkReply> reply(m_network.get(makeRequest(address, part.size())));
    reply->setReadBufferSize(readBufferSize);
    QObject::connect(reply.get(), &QNetworkReply::requestSent, reply.get(),
                     [&isSent] { isSent = true; });

    bool hasBegun = false;
    bool isOver = false;
    while (!isOver) {
        Until change(
            [&reply](QObject& context, const Until::Wake& wake) {
                QObject::connect(reply.get(), &QNetworkReply::readyRead, &context, wake);
                QObject::connect(reply.get(), &QNetworkReply::finished, &context, wake);
                QObject::connect(reply.get(), &QNetworkReply::requestSent, &context, wake);
            },
            isSent ? m_limits.silence : m_limits.connecting);
        if (!co_await change)
            co_return TransferEnd{sentenceFor(QNetworkReply::TimeoutError), {}};
        isOver = reply->isFinished();
        const QUrl target = redirectTarget(*reply);
        if (!target.isEmpty())
            co_return TransferEnd{{}, target};
        if (reply->bytesAvailable() == 0)
            continue;
        if (!std::exchange(hasBegun, true)) {
            const QString problem = problemOf(*reply, part.size(), size);
            if (!problem.isEmpty())
                co_return TransferEnd{problem, {}};
            if (beginsAnew(*reply))
                part.clear();
        }
        const QByteArray bytes = reply->readAll();
        if (part.size() + bytes.size() > size) {
            part.clear();
            co_return TransferEnd{otherFileSentence(), {}};
        }
        part.append(bytes);
        report(ModelPhase::Fetching, part.size());
    }
    const QString problem = hasBegun ? QString() : problemOf(*reply, part.size(), size);
    co_return TransferEnd{problem.isEmpty() ? sentenceFor(reply->error()) : problem, {}};
}

} // namespace setup
