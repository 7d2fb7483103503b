// SPDX-License-Identifier: Apache-2.0
#include "monitor/BulkAllow.h"

#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "monitor/AlwaysAllowOperations.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/OperatorPrompts.h"
#include "system/NextTurn.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
bool isHighRisk(const ApprovalItem &item)
{
    return commandRiskLevel(item.command) == CommandRisk::High;
}

bool isSuspicious(const ApprovalItem &item)
{
    return honestDisplay(item.command).suspicious;
}

QString allowWord(ApprovalDecision decision, qsizetype count)
{
    return decision == ApprovalDecision::AllowAlways ? BulkAllow::tr("Always allow %1").arg(count)
                                                     : BulkAllow::tr("Allow %1 once").arg(count);
}

QString allowAllWord(ApprovalDecision decision, qsizetype count)
{
    return decision == ApprovalDecision::AllowAlways
        ? BulkAllow::tr("Always allow all %1, also of high risk").arg(count)
        : BulkAllow::tr("Allow all %1 once, also of high risk").arg(count);
}
} // namespace

BulkAllow::BulkAllow(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
    connect(&collaborators.monitor.decisions(), &DecisionResolver::decisionSettled, this,
            &BulkAllow::onSettled);
    connect(&collaborators.monitor.board(), &ApprovalBoard::requestRemoved, this,
            [this](const QString &approvalId) { m_read.remove(approvalId); });
}

void BulkAllow::markRead(const ApprovalItem &item)
{
    m_read.insert(item.approvalId, qHash(item.command));
}

bool BulkAllow::isRead(const ApprovalItem &item) const
{
    const auto read = m_read.constFind(item.approvalId);
    return read != m_read.cend() && *read == qHash(item.command);
}

QCoro::Task<> BulkAllow::allow(OperatorPrompts &prompts, QList<ApprovalItem> shown,
                               ApprovalDecision decision)
{
    return asking(this, &prompts, std::move(shown), decision);
}

Question BulkAllow::questionAbout(const QList<ApprovalItem> &items, ApprovalDecision decision) const
{
    const auto count = items.size();
    const auto highRisk = std::ranges::count_if(items, isHighRisk);
    const auto suspicious = std::ranges::count_if(items, isSuspicious);
    const auto unread
        = std::ranges::count_if(items, [this](const auto &item) { return !isRead(item); });
    QStringList facts {tr("Requests: %1").arg(count)};
    const auto addFact = [&facts](const QString &text, qsizetype number) {
        if (number > 0) {
            facts.append(text.arg(number));
        }
    };
    addFact(tr("Of high risk: %1"), highRisk);
    addFact(tr("With misleading characters: %1"), suspicious);
    addFact(tr("Not yet shown whole in the popup or a window: %1"), unread);

    Question question {.title = decision == ApprovalDecision::AllowAlways
                           ? tr("Always allow all pending requests?")
                           : tr("Allow all pending requests once?"),
                       .text = facts.join(u'\n'),
                       .buttons = {}};
    if (highRisk < count) {
        question.buttons.append(allowWord(decision, count - highRisk));
    }
    if (highRisk > 0) {
        question.tick = tr("Also those of high risk (%1)").arg(highRisk);
        question.needsTick = question.buttons.size();
        question.buttons.append(allowAllWord(decision, count));
    }
    question.harmless = question.buttons.size();
    question.buttons.append(tr("Cancel"));
    return question;
}

QCoro::Task<> BulkAllow::asking(Self self, OperatorPrompts *prompts, QList<ApprovalItem> shown,
                                ApprovalDecision decision)
{
    if (self->m_isAsking) {
        prompts->recall();
        co_return;
    }
    self->m_isAsking = true;
    const Question question = self->questionAbout(shown, decision);
    const auto choice = co_await prompts->ask(question);
    if (!self) {
        co_return;
    }
    self->m_isAsking = false;
    if (choice == question.harmless) {
        co_return;
    }
    if (choice != question.needsTick) {
        shown.removeIf(isHighRisk);
    }
    self->begin(shown, decision);
}

void BulkAllow::begin(const QList<ApprovalItem> &items, ApprovalDecision decision)
{
    const QList<ApprovalItem> displayed = m_collaborators.monitor.board().displayItems();
    QStringList ids;
    for (const ApprovalItem &item : items) {
        const auto now = std::ranges::find(displayed, item.approvalId, &ApprovalItem::approvalId);
        if (now != displayed.end() && isSameQuestion(*now, item)) {
            ids.append(item.approvalId);
        }
    }
    if (ids.isEmpty()) {
        return;
    }
    if (decision == ApprovalDecision::AllowAlways) {
        for (const ApprovalItem &item : items) {
            if (ids.contains(item.approvalId)
                && !m_collaborators.alwaysAllow.list().isRemembered(item.command)) {
                m_underWay.insert(item.approvalId, item.command);
            }
        }
    }
    m_collaborators.monitor.decisions().resolveListed(ids, decision);
}

void BulkAllow::onSettled(const QString &approvalId, ApprovalDecision decision,
                          const DecisionOutcome &outcome)
{
    if (!m_underWay.contains(approvalId)
        || outcome.kind == DecisionOutcome::Kind::IgnoredDuplicate) {
        return;
    }
    const QString command = m_underWay.take(approvalId);
    if (decision == ApprovalDecision::AllowAlways
        && outcome.kind == DecisionOutcome::Kind::Confirmed && !m_added.contains(command)) {
        m_added.append(command);
    }
    if (m_underWay.isEmpty() && !m_added.isEmpty()) {
        // Once everybody has heard of the decision itself.
        inNextTurn(this,
                   [this, added = std::exchange(m_added, {})] { Q_EMIT commandsAdded(added); });
    }
}

qsizetype BulkAllow::takeBack(const QStringList &commands)
{
    return m_collaborators.alwaysAllow.takeBack(commands);
}

} // namespace bram
