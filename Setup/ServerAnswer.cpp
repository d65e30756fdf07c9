// SPDX-License-Identifier: MIT
#include "Setup/ServerAnswer.h"

#include <QRegularExpression>

namespace setup {

using namespace Qt::StringLiterals;

namespace {

constexpr int statusOk = 200;
constexpr int statusPartialContent = 206;
constexpr int statusUnauthorized = 401;
constexpr int statusForbidden = 403;
constexpr int statusNotFound = 404;
constexpr int statusGone = 410;
constexpr int statusRangeNotSatisfiable = 416;

QString couldNot(const QString& reason) {
    return u"The on-device model could not be fetched: "_s + reason;
}

int statusOf(const QNetworkReply& answer) {
    return answer.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isTheRest(const QNetworkReply& answer, qint64 from, qint64 size) {
    static const QRegularExpression pattern(u"^bytes (\\d+)-\\d+/(\\d+|\\*)$"_s);
    const auto match =
        pattern.match(QString::fromLatin1(answer.rawHeader("Content-Range").trimmed()));
    return match.captured(1) == QString::number(from) &&
           (match.captured(2) == u"*" || match.captured(2) == QString::number(size));
}

bool isAll(const QNetworkReply& answer, qint64 size) {
    const QVariant length = answer.header(QNetworkRequest::ContentLengthHeader);
    return !length.isValid() || length.toLongLong() == size;
}

} // namespace

QUrl redirectTarget(const QNetworkReply& answer) {
    const QUrl target = answer.attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    return target.isEmpty() ? QUrl() : answer.url().resolved(target);
}

QString problemOf(const QNetworkReply& answer, qint64 from, qint64 size) {
    switch (const int status = statusOf(answer)) {
    case 0:
        return sentenceFor(answer.error());
    case statusOk:
        return isAll(answer, size) ? QString() : otherFileSentence();
    case statusPartialContent:
        return isTheRest(answer, from, size) ? QString() : otherFileSentence();
    case statusRangeNotSatisfiable:
        return otherFileSentence();
    case statusUnauthorized:
    case statusForbidden:
        return couldNot(u"its server refuses to send the file."_s);
    case statusNotFound:
    case statusGone:
        return missingFileSentence();
    default:
        return couldNot(
            u"its server cannot send the file now (status %1). Try again later."_s.arg(status));
    }
}

bool beginsAnew(const QNetworkReply& answer) {
    return statusOf(answer) == statusOk;
}

QString sentenceFor(QNetworkReply::NetworkError error) {
    switch (error) {
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::TimeoutError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError:
        return couldNot(u"its server cannot be reached. With a network, try again."_s);
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyTimeoutError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
        return couldNot(u"the network's proxy does not let it through."_s);
    case QNetworkReply::SslHandshakeFailedError:
        return couldNot(u"there is no secure connection to its server."_s);
    default:
        return couldNot(u"the transfer broke off. To go on with it, try again."_s);
    }
}

QString missingFileSentence() {
    return couldNot(u"its server does not have the file."_s);
}

QString otherFileSentence() {
    return couldNot(u"its server has another file under that name."_s);
}

QString astraySentence() {
    return couldNot(u"its server sends on to an address that is not secure."_s);
}

} // namespace setup
