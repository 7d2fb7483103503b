// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/TelegramStatus.h"
#include "system/FileWatch.h"
#include "telegram/ChatMemory.h"
#include "telegram/TelegramConfigChoice.h"

#include <QCoro/QCoroTask>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>

#include <memory>

namespace bram
{

class ApprovalBoard;
class BackgroundTasks;
class BrackwenConfig;
class Clock;
class RemoteDecisions;
class SharedPollingSetting;
class StoredSwitch;
class SystemLog;
class TelegramApprovalBridge;
class TelegramMirror;
class TelegramTokens;

/// Decides whether a Telegram bridge runs and with which configuration, and replaces it when that changes: the
/// token, the shared polling, the platform's configuration file. Without a bridge nothing of the network is
/// even made. Main thread only.
class TelegramBridgeSupervisor final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        const BrackwenConfig &config;
        TelegramTokens &tokens;
        const SharedPollingSetting &sharedPolling;
        const StoredSwitch &allowPartlyShown;
        const ApprovalBoard &board;
        TelegramMirror &mirror;
        RemoteDecisions &decisions;
        BackgroundTasks &tasks;
        const Clock &clock;
        SystemLog &log;
    };

    explicit TelegramBridgeSupervisor(const Collaborators &collaborators);
    ~TelegramBridgeSupervisor() override;

    /// The first bridge, if there is to be one; from now on configuration changes are followed.
    void start();
    /// Ends the bridge, for good.
    void stop();

    /// Reads everything again and replaces the bridge. The one that runs goes on until the keyring has
    /// answered. What the file or the settings change, on the other hand, holds at once: it takes the token
    /// that the keyring gave before, and a keyring that has been locked since is not asked.
    void configureTelegramBridge();

    TelegramTokens &tokens() { return m_collaborators.tokens; }

    const TelegramStatus &status() const { return m_status; }
    TelegramTokenSource telegramTokenSource() const { return m_status.tokenSource; }

Q_SIGNALS:
    void statusChanged();

private:
    /// When a bridge gives way to the next one.
    enum class Replacement {
        Always,
        IfDifferent,
    };

    void followConfiguration();
    void followSharedPolling();
    void readConfiguration();
    void begin(Replacement replacement);
    static QCoro::Task<> configure(QPointer<TelegramBridgeSupervisor> self, quint64 pass);
    void apply(const TelegramConfigChoice &choice, TelegramStatus status);
    void startBridge(const TelegramBotConfig &config, TelegramStatus &status);
    static void describe(const TelegramBotConfig &config, TelegramStatus &status);
    void endBridge();
    void publish(const TelegramStatus &status);

    Collaborators m_collaborators;
    FileWatch m_watch;
    QString m_configPath; ///< where `m_fallback` comes from
    std::optional<TelegramConfigFallback> m_fallback;
    /// What the keyring gave when it last answered, perhaps that there is none; absent: it is to be asked.
    std::optional<std::optional<QString>> m_storedToken;
    quint64 m_pass = 0; ///< the newest configuration pass; older ones give up
    bool m_mustReplace = true;
    bool m_isStopped = false;
    TelegramStatus m_status;
    ChatMemories m_memories; ///< over all bridges
    std::unique_ptr<QNetworkAccessManager> m_network; ///< only with a bridge, which it outlives
    std::unique_ptr<TelegramApprovalBridge> m_bridge;
};

} // namespace bram
