// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/TerminalFrontEnd.h"

#include "gateway/GatewayStatus.h"
#include "monitor/ApprovalMonitor.h"
#include "system/Clock.h"
#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalOutput.h"
#include "ui/terminal/TerminalTr.h"

#include <QHash>

#include <algorithm>
#include <limits>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qsizetype mostStatusRemembered = 100;
constexpr QLatin1StringView everything("all"); ///< in place of an id

template<typename... Handlers>
struct Overloaded : Handlers... {
    using Handlers::operator()...;
};
} // namespace

TerminalFrontEnd::TerminalFrontEnd(ApprovalMonitor &monitor, LineSource &input,
                                   TerminalOutput &output, const Clock &clock)
    : m_monitor(monitor)
    , m_input(input)
    , m_output(output)
    , m_clock(clock)
    , m_statusSaid {GatewayStatus::Lines().connectionStatus}
// that all begins so goes without saying
{
    m_input.setMomentSource([this] { return m_output.written(); });
    connect(&m_input, &LineSource::lineEntered, this, &TerminalFrontEnd::onLine);
    connect(&m_input, &LineSource::lineRefused, this,
            [this](const QString &reason) { say(reason, LineStyle::Warning); });
    connect(&m_input, &LineSource::endOfInput, this, &TerminalFrontEnd::quit);
    connect(&m_output, &TerminalOutput::closed, this, &TerminalFrontEnd::quit);
}

void TerminalFrontEnd::start()
{
    say(TerminalTr::tr("Requests for approval appear here. `help` lists the commands."),
        LineStyle::Quiet);
    onStatusChanged();
    const ApprovalBoard &board = m_monitor.board();
    connect(&board, &ApprovalBoard::displayItemsChanged, this, &TerminalFrontEnd::announce);
    connect(&board, &ApprovalBoard::requestRemoved, this, &TerminalFrontEnd::onRemoved);
    connect(&m_monitor.decisions(), &DecisionResolver::decisionSettled, this,
            &TerminalFrontEnd::onSettled);
    connect(&m_monitor.gatewayStatus(), &GatewayStatus::statusLinesChanged, this,
            &TerminalFrontEnd::onStatusChanged);
    m_input.start();
    announce();
}

void TerminalFrontEnd::onLine(const QString &text, DialogueMoment begunAt)
{
    if (m_quitting) {
        return;
    }
    const auto command = parseCommandLine(text);
    if (!command) {
        say(command.error().message, LineStyle::Warning);
        return;
    }
    std::visit(Overloaded {
                   [&](PlainCommand plain) { run(plain); },
                   [&](const ShowCommand &wish) { show(wish.target, begunAt); },
                   [&](const DecideCommand &wish) { decide(wish, begunAt); },
                   [&](const DecideAllCommand &wish) { decideAll(wish.decision, begunAt); },
               },
               *command);
}

void TerminalFrontEnd::run(PlainCommand command)
{
    const ApprovalBoard &board = m_monitor.board();
    const int columns = m_output.columns();
    const qsizetype pendingCount = board.displayItems().size();
    switch (command) {
    case PlainCommand::Nothing:
        break;
    case PlainCommand::List:
        list();
        break;
    case PlainCommand::History:
        print(historyLines(board.history(), columns));
        break;
    case PlainCommand::Activity:
        print(activityLines(board.activity(), columns));
        break;
    case PlainCommand::Status:
        print(statusLines(m_monitor.gatewayStatus().lines(), pendingCount, notShown().size(),
                          columns));
        break;
    case PlainCommand::Metrics:
        print(metricsLines(m_monitor.metrics(), pendingCount));
        break;
    case PlainCommand::Reconnect:
        say(TerminalTr::tr("Reconnecting to the gateway."));
        m_statusSaid.clear();
        m_monitor.reconnectGateway();
        break;
    case PlainCommand::ReloadToken:
        say(TerminalTr::tr("Reading the gateway token again."));
        m_statusSaid.clear(); // the answer is one also when it is that of the last time
        m_monitor.reloadGatewayToken();
        onStatusChanged();
        break;
    case PlainCommand::ClearPending:
        clearPending();
        break;
    case PlainCommand::Help:
        print(helpLines(columns));
        break;
    case PlainCommand::Quit:
        quit();
        break;
    }
}

std::optional<ApprovalItem> TerminalFrontEnd::find(const QString &target, DialogueMoment begunAt)
{
    const RequestLookup found = m_numbers.find(target, m_monitor.board().displayItems(), begunAt);
    switch (found.kind) {
    case RequestLookup::Kind::Found:
        return found.item;
    case RequestLookup::Kind::Unknown:
        say(TerminalTr::tr("No pending request is meant by: ") + beginningOfTyped(target),
            LineStyle::Warning);
        break;
    case RequestLookup::Kind::Ambiguous:
        say(TerminalTr::tr("More than one request could be meant by: ") + beginningOfTyped(target),
            LineStyle::Warning);
        break;
    case RequestLookup::Kind::Gone:
        say(TerminalTr::tr("#%1 is no longer pending.").arg(found.number), LineStyle::Warning);
        break;
    }
    return std::nullopt;
}

void TerminalFrontEnd::show(const QString &target, DialogueMoment begunAt)
{
    if (const auto item = find(target, begunAt)) {
        m_input.readWaiting();
        showRequests({*item}, RequestOccasion::Shown);
    }
}

void TerminalFrontEnd::decide(const DecideCommand &command, DialogueMoment begunAt)
{
    const auto item = find(command.target, begunAt);
    if (!item) {
        return;
    }
    const QString &id = item->approvalId;
    switch (m_numbers.answerability(*item, begunAt)) {
    case Answerability::Answerable:
        m_monitor.decisions().resolve(id, command.decision, DecisionOrigin::local(),
                                      ActivityTracking::Record);
        break;
    case Answerability::NotShown:
        say(TerminalTr::tr("Not decided: that request has not been shown yet; `list` shows it."),
            LineStyle::Warning);
        break;
    case Answerability::ShownSince:
        say(TerminalTr::tr("Not decided: #%1 arrived after the line was begun; type it again.")
                .arg(m_numbers.give(id)),
            LineStyle::Warning);
        break;
    case Answerability::ChangedSinceShown:
        say(TerminalTr::tr("Not decided: #%1 has changed since it was shown.")
                .arg(m_numbers.give(id)),
            LineStyle::Warning);
        announce();
        break;
    }
}

void TerminalFrontEnd::decideAll(ApprovalDecision decision, DialogueMoment begunAt)
{
    QStringList ids;
    QStringList later;
    QStringList changed;
    qsizetype notShownCount = 0;
    for (const ApprovalItem &item : m_monitor.board().displayItems()) {
        if (item.approvalId == everything) {
            say(TerminalTr::tr("Not decided: one request has the id `all`; use numbers."),
                LineStyle::Warning);
            return;
        }
        const Answerability answerability = m_numbers.answerability(item, begunAt);
        if (answerability == Answerability::Answerable) {
            ids.append(item.approvalId);
        } else if (answerability == Answerability::ChangedSinceShown) {
            changed.append(u"#%1"_s.arg(m_numbers.give(item.approvalId)));
        } else if (answerability == Answerability::NotShown) {
            ++notShownCount;
        } else {
            later.append(u"#%1"_s.arg(m_numbers.give(item.approvalId)));
        }
    }
    if (!later.isEmpty()) {
        say(TerminalTr::tr("Left out, because they arrived after the line was begun: ")
                + later.join(u' '),
            LineStyle::Warning);
    }
    if (!changed.isEmpty()) {
        say(TerminalTr::tr("Left out, because they have changed since they were shown: ")
                + changed.join(u' '),
            LineStyle::Warning);
        announce();
    }
    if (notShownCount > 0) {
        say(TerminalTr::tr("Left out, because they have not been shown: %1 (`list` shows them)")
                .arg(notShownCount),
            LineStyle::Warning);
    }
    if (ids.isEmpty()) {
        say(TerminalTr::tr("There is nothing to decide."));
        return;
    }
    m_monitor.decisions().resolveListed(ids, decision);
}

void TerminalFrontEnd::list()
{
    m_input.readWaiting();
    QList<ApprovalItem> items = m_monitor.board().displayItems();
    if (items.isEmpty()) {
        say(TerminalTr::tr("No requests are pending."));
        return;
    }
    // By number; those that have none yet follow in the order of the board and get theirs now.
    const auto number = [this](const ApprovalItem &item) {
        return m_numbers.number(item.approvalId).value_or(std::numeric_limits<int>::max());
    };
    std::ranges::stable_sort(items, {}, number);
    showRequests(items, RequestOccasion::Listed);
    m_summarised.clear();
}

void TerminalFrontEnd::clearPending()
{
    explainLeaving();
    const qsizetype count = m_monitor.board().displayItems().size();
    m_monitor.clearPendingApprovals();
    m_leaving.clear(); // said below, for all of them
    say(TerminalTr::tr("Forgotten here: %1. The gateway was not told.").arg(count));
}

void TerminalFrontEnd::quit()
{
    if (!std::exchange(m_quitting, true)) {
        Q_EMIT quitRequested();
    }
}

QList<ApprovalItem> TerminalFrontEnd::notShown() const
{
    QList<ApprovalItem> items = m_monitor.board().displayItems();
    items.removeIf([this](const ApprovalItem &item) { return m_numbers.isShown(item); });
    return items;
}

void TerminalFrontEnd::announce()
{
    if (m_quitting) {
        return;
    }
    m_input.readWaiting(); // typed before what is shown now
    forgetVanished();
    QList<ApprovalItem> arrived;
    QList<ApprovalItem> changed;
    for (const ApprovalItem &item : notShown()) {
        if (m_numbers.isChanged(item)) {
            changed.append(item);
        } else if (!m_summarised.contains(item.approvalId)) {
            arrived.append(item);
        }
    }
    showRequests(changed, RequestOccasion::Changed);
    showRequests(arrived.first(std::min(mostShownAtOnce, arrived.size())),
                 RequestOccasion::Arrived);
    if (arrived.size() > mostShownAtOnce) {
        const QList<ApprovalItem> more = arrived.sliced(mostShownAtOnce);
        for (const ApprovalItem &item : more) {
            m_summarised.insert(item.approvalId);
        }
        say(TerminalTr::tr("%1 more requests; `list` shows them.").arg(more.size()),
            LineStyle::Warning);
    }
}

/// Requests that left the board without a word: pushed out by newer ones.
void TerminalFrontEnd::forgetVanished()
{
    QSet<QString> present;
    for (const ApprovalItem &item : m_monitor.board().displayItems() + m_monitor.board().items()) {
        present.insert(item.approvalId);
    }
    m_summarised.intersect(present);
    for (const QString &id : m_numbers.knownIds()) {
        if (!present.contains(id)) {
            m_numbers.forget(id, m_output.given() + 1);
        }
    }
}

void TerminalFrontEnd::onRemoved(const QString &approvalId, ApprovalHistoryState state)
{
    const auto number = m_numbers.number(approvalId);
    if (!number) {
        return;
    }
    m_numbers.forget(approvalId, m_output.given() + 1);
    m_leaving.append({approvalId, *number, state});
    // Often the end of a decision follows at once and says it better.
    QMetaObject::invokeMethod(this, &TerminalFrontEnd::explainLeaving, Qt::QueuedConnection);
}

void TerminalFrontEnd::explainLeaving()
{
    for (const Leaving &leaving : std::exchange(m_leaving, {})) {
        if (m_monitor.decisions().isResolving(leaving.approvalId)) {
            continue; // perhaps the echo of that very decision; its end will tell
        }
        if (leaving.state == ApprovalHistoryState::Resolved) {
            say(TerminalTr::tr("#%1 was decided elsewhere.").arg(leaving.number));
        } else if (leaving.state == ApprovalHistoryState::Canceled) {
            say(TerminalTr::tr("#%1 is no longer pending.").arg(leaving.number));
        }
    }
}

void TerminalFrontEnd::onSettled(const QString &approvalId, ApprovalDecision decision,
                                 const DecisionOutcome &outcome)
{
    const auto number = m_numbers.number(approvalId);
    if (!number) {
        return; // never shown here, for instance allowed by a rule
    }
    m_leaving.removeIf([&](const Leaving &leaving) { return leaving.approvalId == approvalId; });
    say(outcomeText(*number, decision, outcome),
        outcome.kind == DecisionOutcome::Kind::Failed ? LineStyle::Warning : LineStyle::Plain);
}

void TerminalFrontEnd::onStatusChanged()
{
    const GatewayStatus::Lines &status = m_monitor.gatewayStatus().lines();
    const QString &text = status.connectionStatus;
    if (status.isAboutDecision || m_statusSaid.value(m_statusSaid.size() - 1) == text) {
        return;
    }
    if (status.connectionIndicator == IndicatorState::Green
        || m_statusSaid.size() == mostStatusRemembered) {
        m_statusSaid.clear();
    }
    if (!m_statusSaid.contains(text)) {
        m_statusSaid.append(text);
        say(text);
    }
}

void TerminalFrontEnd::showRequests(const QList<ApprovalItem> &items, RequestOccasion occasion)
{
    if (items.isEmpty()) {
        return;
    }
    TerminalLines lines;
    const bool isAnnouncement
        = occasion == RequestOccasion::Arrived || occasion == RequestOccasion::Changed;
    for (const ApprovalItem &item : items) {
        if (isAnnouncement) {
            lines.append(TerminalLine());
        }
        lines.append(requestLines(item, m_numbers.give(item.approvalId), occasion, m_clock.nowMs(),
                                  m_output.columns()));
    }
    print(lines);
    for (const ApprovalItem &item : items) {
        m_numbers.show(item, m_output.given());
    }
}

void TerminalFrontEnd::print(const TerminalLines &lines)
{
    m_input.printAbove([&] { m_output.write(lines); });
}

void TerminalFrontEnd::say(const QString &message, LineStyle style)
{
    print(messageLines(message, m_output.columns(), style));
}

} // namespace bram
