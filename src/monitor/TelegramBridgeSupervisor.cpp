// SPDX-License-Identifier: Apache-2.0
#include "monitor/TelegramBridgeSupervisor.h"

#include "audit/Redaction.h"
#include "config/SharedPollingSetting.h"
#include "config/StoredSwitch.h"
#include "monitor/ApprovalBoard.h"
#include "monitor/RemoteDecisions.h"
#include "monitor/TelegramMirror.h"
#include "monitor/TelegramTokens.h"
#include "system/BackgroundTasks.h"
#include "system/SystemLog.h"
#include "telegram/TelegramApprovalBridge.h"
#include "telegram/TelegramEndpoint.h"

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

TelegramBridgeSupervisor::TelegramBridgeSupervisor(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_watch(collaborators.config.candidatePaths())
{
    connect(&m_watch, &FileWatch::changed, this, &TelegramBridgeSupervisor::followConfiguration);
    connect(&collaborators.sharedPolling,
            &SharedPollingSetting::allowSharedBotPollingOverrideChanged, this,
            &TelegramBridgeSupervisor::followSharedPolling);
    connect(&collaborators.allowPartlyShown, &StoredSwitch::changed, this,
            [this] { begin(Replacement::IfDifferent); });
    connect(&collaborators.tokens, &TelegramTokens::changed, this,
            &TelegramBridgeSupervisor::configureTelegramBridge);
}

TelegramBridgeSupervisor::~TelegramBridgeSupervisor() = default;

void TelegramBridgeSupervisor::start()
{
    m_watch.start();
    configureTelegramBridge();
}

void TelegramBridgeSupervisor::stop()
{
    m_isStopped = true;
    ++m_pass;
    endBridge();
}

void TelegramBridgeSupervisor::configureTelegramBridge()
{
    m_storedToken.reset();
    readConfiguration();
    begin(Replacement::Always);
}

void TelegramBridgeSupervisor::followSharedPolling()
{
    begin(Replacement::Always);
}

void TelegramBridgeSupervisor::readConfiguration()
{
    const auto files = m_collaborators.config.loadFiles();
    m_configPath = files.isEmpty() ? QString() : files.constFirst().path;
    m_fallback = files.isEmpty()
        ? std::nullopt
        : std::optional(telegramConfigFallback(files.constFirst().content));
}

void TelegramBridgeSupervisor::followConfiguration()
{
    const auto files = m_collaborators.config.loadFiles();
    const bool isReadable = m_configPath.isEmpty()
        || std::ranges::find(files, m_configPath, &BrackwenConfig::File::path) != files.end();
    // Perhaps in the middle of being written. Without the file a bot that the platform polls would be polled.
    if (!isReadable) {
        m_collaborators.log.write(u"[Brackwen][Telegram] the configuration file cannot be read any "
                                  "more; the bridge stays as it was"_s);
        return;
    }
    const auto before = m_fallback;
    readConfiguration();
    // The platform writes its file for many reasons; a new bridge sends a new message to every chat.
    if (m_fallback != before) {
        begin(Replacement::IfDifferent);
    }
}

void TelegramBridgeSupervisor::begin(Replacement replacement)
{
    if (m_isStopped) {
        return;
    }
    m_mustReplace = m_mustReplace || replacement == Replacement::Always;
    m_collaborators.tasks.spawn(configure(this, ++m_pass), u"telegram configuration"_s);
}

QCoro::Task<> TelegramBridgeSupervisor::configure(QPointer<TelegramBridgeSupervisor> self,
                                                  quint64 pass)
{
    TelegramTokens &tokens = self->m_collaborators.tokens;
    TelegramConfigSources sources {
        .environment = tokens.effectiveTelegramEnvironment(),
        .fallback = self->m_fallback,
        .allowSharedBotPollingOverride
        = self->m_collaborators.sharedPolling.allowSharedBotPollingOverride(),
        .offersPartlyShown = self->m_collaborators.allowPartlyShown.isOn()};
    TelegramStatus status {.isEnvironmentSetAside = tokens.isEnvironmentSetAside()};
    // The keyring is asked only when it matters: it may be locked and ask the operator.
    if (!telegramTokenOf(sources.environment)) {
        if (!self->m_storedToken) {
            TelegramStatus waiting = self->m_status;
            waiting.isWaitingForKeyring = true;
            self->publish(waiting);
            const auto stored = co_await tokens.storedTelegramBotToken();
            if (!self || self->m_pass != pass) {
                co_return;
            }
            if (stored) {
                self->m_storedToken = *stored;
            } else {
                // Where there is no keyring, there is no token in it, and nothing is wrong.
                status.isWaitingForKeyring = stored.error().isLocked;
                self->m_collaborators.log.write(
                    QString(u"[Brackwen][Telegram] the keyring did not give the bot token: "_s
                            + redacted(stored.error().description())));
            }
        }
        sources.storedToken = self->m_storedToken.value_or(std::nullopt);
    }
    self->apply(telegramConfig(sources), status);
}

void TelegramBridgeSupervisor::apply(const TelegramConfigChoice &choice, TelegramStatus status)
{
    status.tokenSource = choice.tokenSource;
    status.unreadableRules = choice.unreadableRules;
    if (status.unreadableRules != m_status.unreadableRules) {
        for (const QString &name : status.unreadableRules) {
            m_collaborators.log.write(QString(
                u"[Brackwen][Telegram] "_s + name
                + u" cannot be read in part: where it is unclear, nobody may decide, or only deny"_s));
        }
    }
    const auto running = m_bridge ? std::optional(m_bridge->config()) : std::nullopt;
    if (!std::exchange(m_mustReplace, false) && choice.config == running) {
        if (choice.config) {
            describe(*choice.config, status);
        }
        publish(status);
        return;
    }
    endBridge();
    if (choice.config) {
        startBridge(*choice.config, status);
    } else {
        m_network.reset();
    }
    if (!choice.config || m_bridge) {
        for (const QString &line : bridgeModeLogLines(choice.config)) {
            m_collaborators.log.write(line);
        }
    }
    publish(status);
}

void TelegramBridgeSupervisor::startBridge(const TelegramBotConfig &config, TelegramStatus &status)
{
    const auto apiUrl = telegramApiUrl(m_collaborators.tokens.effectiveTelegramEnvironment());
    if (!apiUrl) {
        status.problem = redacted(apiUrl.error().message);
        m_collaborators.log.write(
            QString(u"[Brackwen][Telegram] bridge disabled: "_s + status.problem));
        return;
    }
    if (!m_network) {
        m_network = std::make_unique<QNetworkAccessManager>();
    }
    m_bridge = std::make_unique<TelegramApprovalBridge>(
        config, *apiUrl,
        [self = QPointer(this), config](const TelegramDecision &decision) {
            return self ? self->m_collaborators.decisions.decide(decision, config)
                        : RemoteVerdict::NotPending;
        },
        TelegramApprovalBridge::Collaborators {.network = *m_network,
                                               .memories = m_memories,
                                               .clock = m_collaborators.clock,
                                               .log = m_collaborators.log,
                                               .tasks = m_collaborators.tasks});
    describe(config, status);
    m_bridge->start();
    m_collaborators.mirror.setBridge(m_bridge.get(), m_collaborators.board.items());
}

void TelegramBridgeSupervisor::describe(const TelegramBotConfig &config, TelegramStatus &status)
{
    status.mode = config.mode();
    status.chatIds = config.chatIds;
    status.boundChatCount = std::ranges::count_if(
        config.chatIds, [&](qint64 chatId) { return !config.agentsOf(chatId).isEmpty(); });
    status.chatRules = config.chatRules;
    std::ranges::copy_if(config.chatIds, std::back_inserter(status.openGroups),
                         [&](qint64 chatId) { return config.isOpenToAll(chatId); });
    status.dryRun = config.dryRun;
}

void TelegramBridgeSupervisor::endBridge()
{
    if (m_bridge) {
        m_collaborators.mirror.setBridge(nullptr, {});
        m_bridge->stop();
        m_bridge.reset();
    }
}

void TelegramBridgeSupervisor::publish(const TelegramStatus &status)
{
    if (std::exchange(m_status, status) != status) {
        Q_EMIT statusChanged();
    }
}

} // namespace bram
