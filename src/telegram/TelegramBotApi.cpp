// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramBotApi.h"

#include "config/ValueParsers.h"
#include "system/SystemLog.h"
#include "telegram/BotApiCall.h"
#include "telegram/TelegramDryRun.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr std::chrono::seconds longestBelievedWait = 24h;

QNetworkRequest requestFor(const QUrl &url)
{
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::ContentTypeHeader, u"application/json"_s);
    request.setHeader(QNetworkRequest::UserAgentHeader, u"BrackwenApprovalsMenu"_s);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    // A connection for each call under way: one that hangs holds up nothing else.
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    return request;
}

std::optional<std::chrono::seconds> waitingTime(const QJsonObject &answer)
{
    const auto seconds
        = parseInt64(answer.value("parameters"_L1).toObject().value("retry_after"_L1));
    if (!seconds || *seconds <= 0) {
        return std::nullopt;
    }
    return std::min(std::chrono::seconds(*seconds), longestBelievedWait);
}
} // namespace

TelegramBotApi::Result readBotApiAnswer(const QByteArray &body, const TokenMask &mask)
{
    const QJsonDocument document = QJsonDocument::fromJson(body);
    if (!document.isObject()) {
        return std::unexpected(BridgeError {.kind = BridgeError::Kind::InvalidResponse});
    }
    const QJsonObject answer = document.object();
    const QJsonValue ok = answer.value("ok"_L1);
    if (ok.toBool(true)) {
        return answer;
    }
    const QString description = answer.value("description"_L1).toString(u"Telegram API error"_s);
    return std::unexpected(BridgeError {.kind = BridgeError::Kind::Api,
                                        .message = mask.masked(description),
                                        .code = answer.value("error_code"_L1).toInt(),
                                        .retryAfter = waitingTime(answer)});
}

TelegramBotApi::TelegramBotApi(const TelegramBotConfig &config, const QUrl &url,
                               QNetworkAccessManager &network, SystemLog &log)
    : m_token(config.token)
    , m_isDryRun(config.dryRun)
    , m_mask(config.token)
    , m_url(url)
    , m_network(network)
    , m_log(log)
{
}

TelegramBotApi::~TelegramBotApi()
{
    stop();
}

Reply<TelegramBotApi::Result> TelegramBotApi::call(const QString &method,
                                                   const QJsonObject &payload,
                                                   std::chrono::seconds timeLimit)
{
    const ReplySource<Result> source(
        std::unexpected(BridgeError {.kind = BridgeError::Kind::Stopped, .message = u"stopped"_s}));
    if (m_isStopped) {
        return source.reply();
    }
    if (m_isDryRun) {
        source.answer(dryRunCall(method, payload));
        return source.reply();
    }
    QUrl url = m_url;
    QString folder = url.path(QUrl::FullyEncoded);
    while (folder.endsWith(u'/')) {
        folder.chop(1);
    }
    url.setPath(folder + u"/bot"_s + QString::fromLatin1(QUrl::toPercentEncoding(m_token, ":"))
                    + u'/' + method,
                QUrl::TolerantMode);
    auto *call = new BotApiCall(
        m_network.post(requestFor(url), QJsonDocument(payload).toJson(QJsonDocument::Compact)),
        timeLimit, this);
    m_calls.insert(call);
    connect(call, &BotApiCall::answered, this, [this, call, source](const QByteArray &body) {
        m_calls.remove(call);
        source.answer(readBotApiAnswer(body, m_mask));
    });
    connect(call, &BotApiCall::failed, this, [this, call, source](const QString &why) {
        m_calls.remove(call);
        source.answer(std::unexpected(
            BridgeError {.kind = BridgeError::Kind::Transport, .message = m_mask.masked(why)}));
    });
    return source.reply();
}

void TelegramBotApi::stop()
{
    m_isStopped = true;
    for (BotApiCall *call : std::exchange(m_calls, {})) {
        delete call; // and with it the source of its reply
    }
}

TelegramBotApi::Result TelegramBotApi::dryRunCall(const QString &method, const QJsonObject &payload)
{
    // The fetches would fill the log.
    if (method != "getUpdates"_L1) {
        m_log.write(QString(u"[Brackwen][Telegram][DryRun] method="_s + method + u" payload="_s
                            + dryRunPayloadDescription(payload, m_mask)));
    }
    return dryRunAnswer(method);
}

} // namespace bram
