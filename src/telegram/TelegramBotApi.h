// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"
#include "telegram/BridgeError.h"
#include "telegram/TelegramBotConfig.h"
#include "telegram/TokenMask.h"

#include <QJsonObject>
#include <QObject>
#include <QSet>
#include <QUrl>

#include <chrono>
#include <expected>

class QNetworkAccessManager;

namespace bram
{

class BotApiCall;
class SystemLog;

/// Calls methods of the Bot API for one bot, or in a dry run says in the log what it would have called. Knows
/// nothing of what the methods mean. Main thread only.
class TelegramBotApi final : public QObject
{
    Q_OBJECT

public:
    /// `network` outlives this object; `url` is the API's address before "/bot".
    TelegramBotApi(const TelegramBotConfig &config, const QUrl &url, QNetworkAccessManager &network,
                   SystemLog &log);
    ~TelegramBotApi() override;

    /// The whole object of the answer, whose "ok" is not false.
    using Result = std::expected<QJsonObject, BridgeError>;

    /// One POST with `payload` as JSON. Ends with the answer, or after `timeLimit`, however much of it has
    /// come by then. Redirects are not followed.
    Reply<Result> call(const QString &method, const QJsonObject &payload,
                       std::chrono::seconds timeLimit = std::chrono::seconds(60));

    /// What takes the bot's token out of texts.
    const TokenMask &mask() const { return m_mask; }

    /// Ends all calls with `Stopped`; later ones end so at once.
    void stop();

private:
    Result dryRunCall(const QString &method, const QJsonObject &payload);

    QString m_token;
    bool m_isDryRun;
    TokenMask m_mask;
    QUrl m_url;
    QNetworkAccessManager &m_network;
    SystemLog &m_log;
    QSet<BotApiCall *> m_calls; ///< children
    bool m_isStopped = false;
};

/// What an answer of the Bot API means, whatever its HTTP status. Error texts go through `mask`.
TelegramBotApi::Result readBotApiAnswer(const QByteArray &body, const TokenMask &mask);

} // namespace bram
