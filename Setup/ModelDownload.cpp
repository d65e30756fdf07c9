// SPDX-License-Identifier: MIT
#include "Setup/ModelDownload.h"

#include "Platform/Desktop/PathTexts.h"
#include "Setup/Amounts.h"
#include "Setup/Checksum.h"
#include "Setup/PartFile.h"
#include "Setup/ServerAnswer.h"
#include "Setup/SetupError.h"
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
                         QNetworkRequest::UserVerifiedRedirectPolicy);
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
            "try again."_s.arg(platform::toText(m_folder.path()), sizeText(m_folder.room())));

    // A transfer that was cut off is gone on with at once, as long as each brings something.
    while (part.size() < offer.size) {
        const qint64 before = part.size();
        const QString end = co_await transfer(offer, part, report);
        if (part.size() <= before)
            throw SetupError(end);
    }

    report(ModelPhase::Checking, part.size());
    if (!co_await isWhole(part.descriptor(), offer.sha256)) {
        part.clear();
        throw SetupError(u"What was fetched is not the on-device model (wrong checksum) and has "
                         "been deleted. Try again."_s);
    }
    part.moveTo(m_folder.modelPath());
}

/// One request, from where the part ends; gives how it ended, in a sentence.
platform::Task<QString> ModelDownload::transfer(const ModelOffer& offer, PartFile& part,
                                                const Report& report) {
    if (offer.address.scheme() == u"https" && !QSslSocket::supportsSsl())
        co_return sentenceFor(QNetworkReply::SslHandshakeFailedError);
    const std::unique_ptr<QNetworkReply> reply(
        m_network.get(makeRequest(offer.address, part.size())));
    reply->setReadBufferSize(readBufferSize);
    bool isSent = false;
    bool isSentAstray = false;
    QObject::connect(reply.get(), &QNetworkReply::requestSent, reply.get(),
                     [&isSent] { isSent = true; });
    QObject::connect(reply.get(), &QNetworkReply::redirected, reply.get(), [&](const QUrl& to) {
        isSentAstray = !mayFollow(offer.address, to);
        if (isSentAstray)
            reply->abort();
        else
            Q_EMIT reply->redirectAllowed();
    });

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
            co_return sentenceFor(QNetworkReply::TimeoutError);
        isOver = reply->isFinished();
        if (reply->bytesAvailable() == 0)
            continue;
        if (!std::exchange(hasBegun, true)) {
            const QString problem = problemOf(*reply, part.size(), offer.size);
            if (!problem.isEmpty())
                co_return problem;
            if (beginsAnew(*reply))
                part.clear();
        }
        const QByteArray bytes = reply->readAll();
        if (part.size() + bytes.size() > offer.size) {
            part.clear();
            co_return otherFileSentence();
        }
        part.append(bytes);
        report(ModelPhase::Fetching, part.size());
    }
    if (isSentAstray)
        co_return astraySentence();
    const QString problem = hasBegun ? QString() : problemOf(*reply, part.size(), offer.size);
    co_return problem.isEmpty() ? sentenceFor(reply->error()) : problem;
}

} // namespace setup
