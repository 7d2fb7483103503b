// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "telegram/TelegramApprovalEntry.h"
#include "telegram/TelegramBotConfig.h"
#include "telegram/TelegramDecision.h"

#include <QList>
#include <QObject>
#include <QUrl>

class QNetworkAccessManager;

namespace bram
{

class BackgroundTasks;
class SystemLog;

/// The one client of Telegram: mirrors the pending requests to the configured chats, one status message a
/// chat, and hands decisions taken there to its owner. It never decides anything and never shows anything;
/// what goes wrong becomes a log line, from which the bot token is masked. Main thread only.
///
/// A bridge keeps its configuration for life: another configuration is another bridge, which knows nothing of
/// the messages of the one before it.
class TelegramApprovalBridge final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        QNetworkAccessManager &network; ///< outlives the bridge
        SystemLog &log;
        BackgroundTasks &tasks;
    };

    /// `apiUrl` as `telegramApiUrl` gives it. Sends nothing yet.
    TelegramApprovalBridge(const TelegramBotConfig &config, const QUrl &apiUrl,
                           TelegramDecisionCallback onDecision, const Collaborators &collaborators);
    ~TelegramApprovalBridge() override;

    /// Begins to fetch updates where the mode asks for it. A second start does nothing.
    void start();

    /// Ends every wait and every call under way, for good: no further call, no decision, no farewell message.
    void stop();

    /// What is pending now, in the order of the queue. Returns at once. Each chat is brought up to date with
    /// the newest list as soon as it may be; lists in between are left out, and one that it already shows
    /// costs nothing.
    void updatePending(const QList<TelegramApprovalEntry> &entries);

    const TelegramBotConfig &config() const { return m_config; }

private:
    TelegramBotConfig m_config;
};

} // namespace bram
