// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/RequestDialogue.h"

#include "config/StoredSwitch.h"
#include "model/HonestDisplay.h"
#include "monitor/ApprovalMonitor.h"
#include "monitor/BulkAllow.h"
#include "monitor/ReliabilityExercises.h"
#include "system/BackgroundTasks.h"
#include "system/Clock.h"
#include "system/Files.h"
#include "ui/terminal/TerminalPrompts.h"
#include "ui/terminal/TerminalTr.h"
#include "ui/terminal/TerminalVoice.h"
#include "ui/terminal/TypedPath.h"

#include <QFileInfo>

#include <algorithm>
#include <limits>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView everything("all"); ///< in place of an id
} // namespace

RequestDialogue::RequestDialogue(const Collaborators &collaborators)
    : m_monitor(collaborators.monitor)
    , m_bulkAllow(collaborators.bulkAllow)
    , m_prompts(collaborators.prompts)
    , m_tasks(collaborators.tasks)
    , m_voice(collaborators.voice)
    , m_allowPartlyShown(collaborators.allowPartlyShown)
    , m_clock(collaborators.clock)
{
}

void RequestDialogue::start()
{
    const ApprovalBoard &board = m_monitor.board();
    connect(&board, &ApprovalBoard::displayItemsChanged, this, &RequestDialogue::announce);
    connect(&board, &ApprovalBoard::requestRemoved, this, &RequestDialogue::onRemoved);
    connect(&m_monitor.decisions(), &DecisionResolver::decisionSettled, this,
            &RequestDialogue::onSettled);
    connect(&m_bulkAllow, &BulkAllow::commandsAdded, this, &RequestDialogue::onCommandsAdded);
}

std::optional<ApprovalItem> RequestDialogue::find(const QString &target, DialogueMoment begunAt)
{
    const RequestLookup found = m_numbers.find(target, m_monitor.board().displayItems(), begunAt);
    switch (found.kind) {
    case RequestLookup::Kind::Found:
        return found.item;
    case RequestLookup::Kind::Unknown:
        m_voice.say(TerminalTr::tr("No pending request is meant by: ") + beginningOfTyped(target),
                    LineStyle::Warning);
        break;
    case RequestLookup::Kind::Ambiguous:
        m_voice.say(TerminalTr::tr("More than one request could be meant by: ")
                        + beginningOfTyped(target),
                    LineStyle::Warning);
        break;
    case RequestLookup::Kind::Gone:
        m_voice.say(TerminalTr::tr("#%1 is no longer pending.").arg(found.number),
                    LineStyle::Warning);
        break;
    }
    return std::nullopt;
}

void RequestDialogue::show(const QString &target, DialogueMoment begunAt)
{
    if (const auto item = find(target, begunAt)) {
        m_voice.readWaiting();
        showRequests({*item}, RequestOccasion::Shown);
    }
}

void RequestDialogue::save(const SaveCommand &command, DialogueMoment begunAt)
{
    const auto path = usableTypedPath(command.path, FileQuestion::Kind::SaveFile);
    if (!path) {
        m_voice.say(path.error().message, LineStyle::Warning);
    } else if (const auto item = find(command.target, begunAt)) {
        m_tasks.spawn(write(this, *item, *path), u"save"_s);
    }
}

QCoro::Task<> RequestDialogue::write(QPointer<RequestDialogue> self, ApprovalItem item,
                                     QString path)
{
    if (QFileInfo::exists(path)) {
        const bool agreed = co_await self->m_prompts.agreeToReplace(path);
        if (!self || !agreed) {
            co_return;
        }
    }
    using Written = std::expected<void, Error>;
    std::function<Written()> work = [command = item.command, path] {
        return writeWholeFile(path, honestDisplay(command).text.toUtf8() + '\n');
    };
    const Written ended = std::unexpected(Error {TerminalTr::tr("The program ends.")});
    const Written written = co_await self->m_worker.run<Written>(ended, std::move(work));
    if (!self) {
        co_return;
    }
    if (!written) {
        self->m_voice.say(written.error().message, LineStyle::Warning);
        co_return;
    }
    self->m_voice.say(TerminalTr::tr("Request #%1 is written whole, with marks for what could "
                                     "mislead, to: %2")
                          .arg(QString::number(self->m_numbers.give(item.approvalId)), path));
    const ApprovalItem *now = self->m_monitor.board().find(item.approvalId);
    if (now != nullptr && isSameQuestion(*now, item)) {
        self->m_numbers.show(item, self->m_voice.given());
    }
}

Answerability RequestDialogue::answerability(const ApprovalItem &item, ApprovalDecision decision,
                                             DialogueMoment begunAt) const
{
    const Answerability answerability = m_numbers.answerability(item, begunAt);
    const bool mayBePart = decision == ApprovalDecision::Deny || m_allowPartlyShown.isOn();
    return answerability == Answerability::ShownInPart && mayBePart ? Answerability::Answerable
                                                                    : answerability;
}

void RequestDialogue::decide(const DecideCommand &command, DialogueMoment begunAt)
{
    const auto item = find(command.target, begunAt);
    if (!item) {
        return;
    }
    const QString &id = item->approvalId;
    Answerability answer = answerability(*item, command.decision, begunAt);
    if (answer == Answerability::NotShown && command.decision == ApprovalDecision::Deny
        && command.target == id) {
        m_numbers.give(id); // what comes of it is told under a number
        answer = Answerability::Answerable; // nobody has to read what they do not let run
    }
    switch (answer) {
    case Answerability::Answerable:
        m_monitor.decisions().resolve(id, command.decision, DecisionOrigin::local(),
                                      ActivityTracking::Record);
        break;
    case Answerability::ShownInPart:
        m_voice.say(TerminalTr::tr("Not decided: #%1 had not been shown whole when the line was "
                                   "begun; `show %1` shows it, `save %1 FILE` writes it into a "
                                   "file.")
                        .arg(m_numbers.give(id)),
                    LineStyle::Warning);
        break;
    case Answerability::NotShown:
        m_voice.say(
            TerminalTr::tr("Not decided: that request has not been shown yet; `list` shows it."),
            LineStyle::Warning);
        break;
    case Answerability::ShownSince:
        m_voice.say(
            TerminalTr::tr("Not decided: #%1 arrived after the line was begun; type it again.")
                .arg(m_numbers.give(id)),
            LineStyle::Warning);
        break;
    case Answerability::ChangedSinceShown:
        m_voice.say(TerminalTr::tr("Not decided: #%1 has changed since it was shown.")
                        .arg(m_numbers.give(id)),
                    LineStyle::Warning);
        announce();
        break;
    }
}

void RequestDialogue::decideAll(ApprovalDecision decision, DialogueMoment begunAt)
{
    QList<ApprovalItem> items;
    QStringList later;
    QStringList changed;
    QStringList inPart;
    qsizetype notShownCount = 0;
    for (const ApprovalItem &item : m_monitor.board().displayItems()) {
        if (item.approvalId == everything) {
            m_voice.say(TerminalTr::tr("Not decided: one request has the id `all`; use numbers."),
                        LineStyle::Warning);
            return;
        }
        switch (answerability(item, decision, begunAt)) {
        case Answerability::Answerable:
            items.append(item);
            break;
        case Answerability::ShownInPart:
            inPart.append(u"#%1"_s.arg(m_numbers.give(item.approvalId)));
            break;
        case Answerability::ChangedSinceShown:
            changed.append(u"#%1"_s.arg(m_numbers.give(item.approvalId)));
            break;
        case Answerability::NotShown:
            ++notShownCount;
            break;
        case Answerability::ShownSince:
            later.append(u"#%1"_s.arg(m_numbers.give(item.approvalId)));
            break;
        }
    }
    if (!later.isEmpty()) {
        m_voice.say(TerminalTr::tr("Left out, because they arrived after the line was begun: ")
                        + later.join(u' '),
                    LineStyle::Warning);
    }
    if (!changed.isEmpty()) {
        m_voice.say(TerminalTr::tr("Left out, because they have changed since they were shown: ")
                        + changed.join(u' '),
                    LineStyle::Warning);
        announce();
    }
    if (!inPart.isEmpty()) {
        m_voice.say(TerminalTr::tr("Left out, because they had not been shown whole: ")
                        + inPart.join(u' '),
                    LineStyle::Warning);
    }
    if (notShownCount > 0) {
        m_voice.say(
            TerminalTr::tr("Left out, because they have not been shown: %1 (`list` shows them)")
                .arg(notShownCount),
            LineStyle::Warning);
    }
    if (items.isEmpty()) {
        m_voice.say(TerminalTr::tr("There is nothing to decide."));
    } else if (decision == ApprovalDecision::Deny) {
        QStringList ids;
        for (const ApprovalItem &item : items) {
            ids.append(item.approvalId);
        }
        m_monitor.decisions().resolveListed(ids, decision);
    } else {
        m_tasks.spawn(m_bulkAllow.allow(m_prompts, items, decision), u"bulk decision"_s);
    }
}

void RequestDialogue::onCommandsAdded(const QStringList &commands)
{
    m_added = commands;
    m_voice.say(TerminalTr::tr("Added to the always-allow list: %1. `undo` takes that back.")
                    .arg(commands.size()));
}

void RequestDialogue::undo()
{
    if (m_added.isEmpty()) {
        m_voice.say(TerminalTr::tr("There is nothing to undo."));
    } else {
        const qsizetype count = m_bulkAllow.takeBack(std::exchange(m_added, {}));
        m_voice.say(TerminalTr::tr("Taken out of the always-allow list again: %1.").arg(count));
    }
}

void RequestDialogue::list()
{
    m_voice.readWaiting();
    QList<ApprovalItem> items = m_monitor.board().displayItems();
    if (items.isEmpty()) {
        m_voice.say(TerminalTr::tr("No requests are pending."));
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

void RequestDialogue::clearPending()
{
    explainLeaving();
    const qsizetype count = m_monitor.board().displayItems().size();
    m_monitor.clearPendingApprovals();
    m_leaving.clear(); // said below, for all of them
    m_voice.say(TerminalTr::tr("Forgotten here: %1. The gateway was not told.").arg(count));
}

QList<ApprovalItem> RequestDialogue::notShown() const
{
    QList<ApprovalItem> items = m_monitor.board().displayItems();
    items.removeIf([this](const ApprovalItem &item) { return m_numbers.isShown(item); });
    return items;
}

void RequestDialogue::announce()
{
    if (m_isEnded) {
        return;
    }
    m_voice.readWaiting(); // typed before what is shown now
    forgetVanished();
    if (m_voice.isBehind()) {
        return; // the reader would miss it; `goOnAfterGap` shows it
    }
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
        m_voice.say(TerminalTr::tr("%1 more requests; `list` shows them.").arg(more.size()),
                    LineStyle::Warning);
    }
}

void RequestDialogue::goOnAfterGap(qint64 linesLeftOut)
{
    if (linesLeftOut > 0) {
        m_voice.say(TerminalTr::tr("%1 lines were left out here, because they were not read in "
                                   "time; `list` shows the pending requests.")
                        .arg(linesLeftOut),
                    LineStyle::Warning);
    }
    announce();
}

/// Requests that left the board without a word: pushed out by newer ones.
void RequestDialogue::forgetVanished()
{
    QSet<QString> present;
    for (const ApprovalItem &item : m_monitor.board().displayItems() + m_monitor.board().items()) {
        present.insert(item.approvalId);
    }
    m_summarised.intersect(present);
    for (const QString &id : m_numbers.knownIds()) {
        if (!present.contains(id)) {
            m_numbers.forget(id, m_voice.given() + 1);
        }
    }
}

void RequestDialogue::onRemoved(const QString &approvalId, ApprovalHistoryState state)
{
    const auto number = m_numbers.number(approvalId);
    if (!number) {
        return;
    }
    m_numbers.forget(approvalId, m_voice.given() + 1);
    m_leaving.append({approvalId, *number, state});
    // Often the end of a decision follows at once and says it better.
    QMetaObject::invokeMethod(this, &RequestDialogue::explainLeaving, Qt::QueuedConnection);
}

void RequestDialogue::explainLeaving()
{
    for (const Leaving &leaving : std::exchange(m_leaving, {})) {
        if (m_monitor.decisions().isResolving(leaving.approvalId)) {
            continue; // perhaps the echo of that very decision; its end will tell
        }
        if (leaving.state == ApprovalHistoryState::Resolved) {
            m_voice.say(TerminalTr::tr("#%1 was decided elsewhere.").arg(leaving.number));
        } else if (leaving.state == ApprovalHistoryState::Canceled) {
            m_voice.say(TerminalTr::tr("#%1 has expired.").arg(leaving.number));
        }
    }
}

void RequestDialogue::onSettled(const QString &approvalId, ApprovalDecision decision,
                                const DecisionOutcome &outcome)
{
    const auto number = m_numbers.number(approvalId);
    if (!number) {
        return; // never shown here, for instance allowed by a rule
    }
    m_leaving.removeIf([&](const Leaving &leaving) { return leaving.approvalId == approvalId; });
    if (outcome.kind == DecisionOutcome::Kind::ResolvedElsewhere
        && ReliabilityExercises::isMadeUp(approvalId)) {
        m_voice.say(
            TerminalTr::tr("#%1 was made up by an exercise: your decision was tried, and the "
                           "gateway knows of no such request.")
                .arg(*number));
        return;
    }
    m_voice.say(outcomeText(*number, decision, outcome),
                outcome.kind == DecisionOutcome::Kind::Failed ? LineStyle::Warning
                                                              : LineStyle::Plain);
}

void RequestDialogue::showRequests(const QList<ApprovalItem> &items, RequestOccasion occasion)
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
                                  m_voice.columns(), m_monitor.board().askReason(item.approvalId)));
    }
    if (!m_voice.print(lines)) {
        return; // not seen
    }
    for (const ApprovalItem &item : items) {
        const ShownExtent extent = shownExtent(item, occasion);
        m_numbers.show(item, m_voice.given(), extent);
        if (extent == ShownExtent::Whole) {
            m_bulkAllow.markRead(item);
        }
    }
}

} // namespace bram
