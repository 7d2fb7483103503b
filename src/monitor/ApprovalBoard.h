// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"
#include "model/DecisionMaker.h"
#include "monitor/ActivityFeed.h"
#include "monitor/ApprovalHistory.h"
#include "monitor/MonitorPorts.h"
#include "monitor/PendingApprovals.h"
#include "monitor/PopupQueue.h"
#include "monitor/RecentIds.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QTimer>

namespace bram
{

class Clock;
class SystemLog;

/// What views list: the request in the popup, those waiting for it, then the other pending ones; each id
/// once, and only what the choice of agent lets through.
QList<ApprovalItem> deriveDisplayItems(const PopupQueue &popups, const PendingApprovals &pending,
                                       const AgentFilter *filter);

/// The state that every surface shows: pending requests, the list derived from them for display,
/// the popup, history and activity. Changed only by intake and resolution; views read it and follow its
/// signals.
///
/// The derived list is recomputed when it is read after a change, and published once a turn of the
/// event loop, or less often when that takes long: a burst of requests costs one recomputation, not one each.
class ApprovalBoard final : public QObject
{
    Q_OBJECT

public:
    ApprovalBoard(const Clock &clock, SystemLog &log, const MonitorPorts &ports);

    /// All pending requests, newest first, at most 50.
    const QList<ApprovalItem> &items() const { return m_pending.items(); }
    /// The pending request with this id, listed or waiting for the popup; null when there is none.
    const ApprovalItem *find(const QString &approvalId) const;
    /// See `deriveDisplayItems`; up to date at every call.
    const QList<ApprovalItem> &displayItems() const;
    qsizetype menuBadgeCount() const { return displayItems().size(); }
    /// The count that views were told last, which costs nothing to ask for.
    qsizetype publishedCount() const { return m_publishedItems.size(); }
    const std::optional<ApprovalItem> &activePopupItem() const { return m_popups.activeItem(); }
    const QList<ApprovalHistoryEntry> &history() const { return m_history.entries(); }
    /// The history's row for this request; null when there is none.
    const ApprovalHistoryEntry *historyRow(const QString &approvalId) const
    {
        return m_history.row(approvalId);
    }
    const QList<ActivityEntry> &activity() const { return m_activity.entries(); }

    /// Whether it has left the list undecided, as its time was over.
    bool hasExpired(const QString &approvalId) const
    {
        const auto *row = m_history.row(approvalId);
        return row != nullptr && row->state == ApprovalHistoryState::Canceled;
    }
    /// The command of the request with this id, pending or else from its history row; empty when
    /// it is not known, or not kept whole.
    QString commandFor(const QString &approvalId) const;

    /// Why a person is asked about the pending request.
    AskReason askReason(const QString &approvalId) const { return m_askReasons.value(approvalId); }

    /// Takes a request in: listed, in the history, and, if it passes the choice of agent, queued for the
    /// popup and notified once.
    void add(const ApprovalItem &item, AskReason reason = AskReason::Usual);
    /// Only into the history: an always-allowed command is answered without being listed.
    void addToHistory(const ApprovalItem &item);
    /// Takes a request out everywhere, with what became of it.
    void remove(const QString &approvalId, ApprovalHistoryState state,
                DecisionMaker maker = DecisionMaker::Person);
    /// Forgets every pending request here.
    void clearPending();
    void clearHistory();
    void recordActivity(ActivityActor actor, ActivityAction action, const QString &detail);
    /// Empties the popup's queue and takes the popup off the screen.
    void dismissPopups();
    /// To be called when the choice of agent has changed: what the popup and notifications show of other
    /// agents goes, undecided; pending requests of the chosen one come as if they had just arrived,
    /// but not to the popup if they were closed or answered there.
    void applyAgentChoice();

Q_SIGNALS:
    void displayItemsChanged();
    void badgeCountChanged(qsizetype count);
    void historyChanged();
    void activityChanged();
    /// A request left the list, with what became of it.
    void requestRemoved(const QString &approvalId, bram::ApprovalHistoryState state);
    /// Nothing is known any more of a request that had fallen off every list before.
    void requestForgotten(const QString &approvalId);
    /// A person has decided in the popup.
    void decidedInPopup(const QString &approvalId, bram::ApprovalDecision decision);

private:
    bool passesFilter(const ApprovalItem &item) const;
    /// Derives the list anew and publishes it.
    void refreshDerivedDisplays();
    void ask(const ApprovalItem &item);
    void tellOfLeavingOut(const ApprovalItem &item);
    void askPendingNeverAsked();
    void askLeftOutWhenThereIsRoom();
    void withdrawNotification(const QString &approvalId);
    void dismissPopup();
    /// For a request that may have left its last list: nobody could tell any more what it is about. That
    /// it was asked about is remembered for a while.
    void letGoUnlessListed(const QString &approvalId);
    void presentNextPopupIfNeeded();
    void presentActive();
    void onPopupAnswered(const QString &approvalId, std::optional<ApprovalDecision> decision);
    void publishAtRest();
    void publish();
    void returnMemoryAfterBurst();

    const Clock &m_clock;
    SystemLog &m_log;
    MonitorPorts m_ports;
    PendingApprovals m_pending;
    ApprovalHistory m_history;
    ActivityFeed m_activity;
    PopupQueue m_popups;
    bool m_isLeavingOut = false; ///< the queue had no room; not everything pending is in it
    quint64 m_presentationSerial = 0; ///< of what the popup shows
    QSet<QString> m_notifiedIds;
    RecentIds m_unlisted; ///< fell off every list
    QHash<QString, AskReason> m_askReasons; ///< of the listed requests; the usual one is left out

    mutable QList<ApprovalItem> m_displayItems;
    mutable bool m_displayStale = false; ///< to be derived anew when next read
    QList<ApprovalItem> m_publishedItems;
    bool m_publishScheduled = false;
    QTimer m_publishRest; ///< while it runs nothing is published
    qsizetype m_mostPublished = 0; ///< since memory was last given back
};

} // namespace bram
