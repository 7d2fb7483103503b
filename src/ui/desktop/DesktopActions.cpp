// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DesktopActions.h"

#include "config/Environment.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/BulkAllow.h"
#include "monitor/OperatorPrompts.h"
#include "system/BackgroundTasks.h"
#include "ui/language/LanguageChoice.h"

#include <QClipboard>
#include <QDesktopServices>
#include <QGuiApplication>
#include <QUrl>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Where the platform serves its control page when the environment names no other address.
const QString defaultControlUiUrl = u"http://127.0.0.1:18789"_s;
} // namespace

DesktopActions::DesktopActions(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_record({.record = collaborators.record,
                .prompts = collaborators.prompts,
                .tasks = collaborators.tasks,
                .language = collaborators.language,
                .surface = collaborators.surface})
{
    connect(&collaborators.bulkAllow, &BulkAllow::commandsAdded, this,
            [this](const QStringList &commands) {
                m_collaborators.tasks.spawn(offeringToTakeBack(this, commands), u"undo"_s);
            });
}

bool DesktopActions::isAsShown(const ApprovalItem &shown) const
{
    const ApprovalItem *now = m_collaborators.monitor.board().find(shown.approvalId);
    return now != nullptr && isSameQuestion(*now, shown);
}

void DesktopActions::decide(const ApprovalItem &shown, ApprovalDecision decision)
{
    if (!isAsShown(shown)) {
        Q_EMIT changedSinceShown(shown.approvalId);
        return;
    }
    m_collaborators.monitor.decisions().resolve(shown.approvalId, decision, DecisionOrigin::local(),
                                                ActivityTracking::Record);
}

void DesktopActions::allowAll(const QList<ApprovalItem> &shown, ApprovalDecision decision)
{
    QList<ApprovalItem> present = shown;
    present.removeIf([this](const ApprovalItem &item) { return !isAsShown(item); });
    if (!present.isEmpty()) {
        m_collaborators.tasks.spawn(
            m_collaborators.bulkAllow.allow(m_collaborators.prompts, present, decision),
            u"bulk decision"_s);
    }
}

void DesktopActions::denyAll(const QList<ApprovalItem> &shown)
{
    QStringList ids;
    for (const ApprovalItem &item : shown) {
        ids.append(item.approvalId);
    }
    const auto isShown = [&ids](const ApprovalItem &item) { return ids.contains(item.approvalId); };
    if (std::ranges::all_of(m_collaborators.monitor.board().displayItems(), isShown)) {
        m_collaborators.monitor.decisions().denyAllPendingAndDismissPopups();
    } else {
        m_collaborators.monitor.decisions().resolveListed(ids, ApprovalDecision::Deny);
    }
}

void DesktopActions::markRead(const ApprovalItem &item)
{
    m_collaborators.bulkAllow.markRead(item);
}

QCoro::Task<> DesktopActions::offeringToTakeBack(QPointer<DesktopActions> self, QStringList commands)
{
    const Question question {.title = tr("Added to the always-allow list: %1").arg(commands.size()),
                             .text = tr("From now on these commands run without a question."),
                             .buttons = {tr("Undo"), tr("Close")},
                             .harmless = 1};
    const auto choice = co_await self->m_collaborators.prompts.ask(question);
    if (self && choice == 0) {
        self->m_collaborators.bulkAllow.takeBack(commands);
    }
}

void DesktopActions::clearPending()
{
    m_collaborators.monitor.clearPendingApprovals();
}

void DesktopActions::clearHistory()
{
    m_collaborators.monitor.clearHistory();
}

void DesktopActions::copyDetails(const ApprovalItem &item)
{
    QGuiApplication::clipboard()->setText(item.pretty());
}

void DesktopActions::copyId(const QString &approvalId)
{
    QGuiApplication::clipboard()->setText(approvalId);
}

void DesktopActions::reconnectGateway()
{
    m_collaborators.monitor.reconnectGateway();
}

void DesktopActions::reloadGatewayToken()
{
    m_collaborators.monitor.reloadGatewayToken();
}

void DesktopActions::openControlUI()
{
    const QUrl address(m_collaborators.environment.trimmed(u"BRACKWEN_CONTROL_UI_URL"_s)
                           .value_or(defaultControlUiUrl),
                       QUrl::StrictMode);
    if (address.isValid() && !address.isRelative()) {
        QDesktopServices::openUrl(address);
    }
}

void DesktopActions::chooseLanguage(MenuLanguage language)
{
    m_collaborators.language.choose(language);
}

void DesktopActions::chooseAgent(const QString &agentId)
{
    if (agentId != everyAgent) {
        m_collaborators.monitor.agents().setSelectedAgent(agentId);
    } else if (!m_isChoosingAllAgents) {
        m_collaborators.tasks.spawn(choosingAllAgents(this), u"choice of agent"_s);
    } else {
        m_collaborators.prompts.recall();
    }
}

QCoro::Task<> DesktopActions::choosingAllAgents(QPointer<DesktopActions> self)
{
    self->m_isChoosingAllAgents = true;
    co_await AgentSelection::choose(&self->m_collaborators.monitor.agents(),
                                    self->m_collaborators.prompts, everyAgent);
    if (self) {
        self->m_isChoosingAllAgents = false;
    }
}

} // namespace bram
