// SPDX-License-Identifier: Apache-2.0
#include "ui/language/Words.h"

#include <QCoreApplication>

namespace bram
{

namespace
{
template<typename Enum>
struct WordRow {
    Enum value;
    const char *word;
};

constexpr WordRow<IndicatorState> indicators[] = {
    {IndicatorState::Green, QT_TRANSLATE_NOOP("Words", "working")},
    {IndicatorState::Yellow, QT_TRANSLATE_NOOP("Words", "under way")},
    {IndicatorState::Red, QT_TRANSLATE_NOOP("Words", "failing")},
    {IndicatorState::Gray, QT_TRANSLATE_NOOP("Words", "unknown")},
};

constexpr WordRow<ApprovalHistoryState> historyStates[] = {
    {ApprovalHistoryState::Pending, QT_TRANSLATE_NOOP("Words", "pending")},
    {ApprovalHistoryState::AllowOnce, QT_TRANSLATE_NOOP("Words", "allowed once")},
    {ApprovalHistoryState::AllowAlways, QT_TRANSLATE_NOOP("Words", "allowed always")},
    {ApprovalHistoryState::Deny, QT_TRANSLATE_NOOP("Words", "denied")},
    // Nothing but the end of its time takes a request away undecided.
    {ApprovalHistoryState::Canceled, QT_TRANSLATE_NOOP("Words", "expired")},
    {ApprovalHistoryState::Resolved, QT_TRANSLATE_NOOP("Words", "decided elsewhere")},
};

constexpr WordRow<ActivityAction> activityActions[] = {
    {ActivityAction::AllowOnce, QT_TRANSLATE_NOOP("Words", "allowed once")},
    {ActivityAction::AllowAlways, QT_TRANSLATE_NOOP("Words", "allowed always")},
    {ActivityAction::Deny, QT_TRANSLATE_NOOP("Words", "denied")},
    {ActivityAction::ApproveAllPending, QT_TRANSLATE_NOOP("Words", "allowed all once")},
    {ActivityAction::DenyAllPending, QT_TRANSLATE_NOOP("Words", "denied all")},
    {ActivityAction::AlwaysAllowAllPending, QT_TRANSLATE_NOOP("Words", "allowed all always")},
    {ActivityAction::RefreshAlwaysAllowList,
     QT_TRANSLATE_NOOP("Words", "always-allow list read again")},
    {ActivityAction::BackupAlwaysAllowList,
     QT_TRANSLATE_NOOP("Words", "always-allow list backed up")},
    {ActivityAction::RestoreAlwaysAllowList,
     QT_TRANSLATE_NOOP("Words", "always-allow list restored")},
    {ActivityAction::RegisterAlwaysAllowToBrackwen,
     QT_TRANSLATE_NOOP("Words", "registered in Brackwen")},
    {ActivityAction::AddToAppList, QT_TRANSLATE_NOOP("Words", "added to the app list")},
    {ActivityAction::AddAllToAppList, QT_TRANSLATE_NOOP("Words", "added all to the app list")},
    {ActivityAction::RemoveFromAppList, QT_TRANSLATE_NOOP("Words", "removed from the app list")},
    {ActivityAction::RemoveFromBrackwen,
     QT_TRANSLATE_NOOP("Words", "removed from the Brackwen list")},
    {ActivityAction::RemoveFromBoth, QT_TRANSLATE_NOOP("Words", "removed from both lists")},
    {ActivityAction::ClearAppList, QT_TRANSLATE_NOOP("Words", "app list cleared")},
    {ActivityAction::ClearBrackwenList, QT_TRANSLATE_NOOP("Words", "Brackwen list cleared")},
    {ActivityAction::ClearBothLists, QT_TRANSLATE_NOOP("Words", "both lists cleared")},
    {ActivityAction::PopupQueueFull,
     QT_TRANSLATE_NOOP("Words", "too many requests, newer ones only listed")},
    {ActivityAction::ReconnectGateway,
     QT_TRANSLATE_NOOP("Words", "asked for a new connection to the gateway")},
    {ActivityAction::ReloadGatewayToken, QT_TRANSLATE_NOOP("Words", "gateway token reloaded")},
};

constexpr WordRow<AlwaysAllowSource> alwaysAllowSources[] = {
    {AlwaysAllowSource::LocalOnly, QT_TRANSLATE_NOOP("Words", "app")},
    {AlwaysAllowSource::BrackwenOnly, QT_TRANSLATE_NOOP("Words", "Brackwen")},
    {AlwaysAllowSource::Both, QT_TRANSLATE_NOOP("Words", "app + Brackwen")},
};

constexpr WordRow<ActivityActor> activityActors[] = {
    {ActivityActor::App, QT_TRANSLATE_NOOP("Words", "app")},
    {ActivityActor::Brackwen, QT_TRANSLATE_NOOP("Words", "Brackwen")},
    {ActivityActor::AppAndBrackwen, QT_TRANSLATE_NOOP("Words", "app + Brackwen")},
};

constexpr WordRow<TokenSyncState> tokenStates[] = {
    {TokenSyncState::Checking, QT_TRANSLATE_NOOP("Words", "checking")},
    {TokenSyncState::Matching, QT_TRANSLATE_NOOP("Words", "matches the configuration")},
    {TokenSyncState::Mismatch, QT_TRANSLATE_NOOP("Words", "does not match the configuration")},
    {TokenSyncState::NoReference,
     QT_TRANSLATE_NOOP("Words", "the configuration holds none to compare with")},
    {TokenSyncState::Resynchronised,
     QT_TRANSLATE_NOOP("Words", "taken from the configuration again, reconnecting")},
    {TokenSyncState::RepeatedlyFailing,
     QT_TRANSLATE_NOOP("Words", "refused by the gateway again and again")},
};

template<typename Enum, std::size_t N>
QString wordFor(const WordRow<Enum> (&rows)[N], Enum value)
{
    for (const WordRow<Enum> &row : rows) {
        if (row.value == value) {
            return QCoreApplication::translate("Words", row.word);
        }
    }
    Q_UNREACHABLE();
}
} // namespace

QString indicatorWord(IndicatorState indicator)
{
    return wordFor(indicators, indicator);
}

QString historyStateWord(ApprovalHistoryState state, DecisionMaker maker)
{
    return maker == DecisionMaker::AlwaysAllowList
        ? QCoreApplication::translate("Words", "allowed automatically")
        : wordFor(historyStates, state);
}

QString askReasonWords(AskReason reason)
{
    switch (reason) {
    case AskReason::Usual:
        return {};
    case AskReason::NotExact:
        return QCoreApplication::translate(
            "Words",
            "The always-allow list has these words, but perhaps with other blanks or line breaks, "
            "which a shell may read differently. Always allow takes in exactly this text.");
    case AskReason::NotRecordable:
        return QCoreApplication::translate(
            "Words",
            "On the always-allow list, but asked because the audit log cannot be written: nothing "
            "is answered automatically that cannot be put on record.");
    case AskReason::AutomaticAnswerFailed:
        return QCoreApplication::translate("Words",
                                           "On the always-allow list, but asked because the "
                                           "automatic answer did not get through.");
    }
    Q_UNREACHABLE();
}

QString activityActionWord(ActivityAction action)
{
    return wordFor(activityActions, action);
}

QString alwaysAllowSourceWord(AlwaysAllowSource source)
{
    return wordFor(alwaysAllowSources, source);
}

QString activityActorWord(ActivityActor actor)
{
    return wordFor(activityActors, actor);
}

QString tokenStateWords(TokenSyncState state)
{
    return wordFor(tokenStates, state);
}

QString timeLeftWords(const ApprovalItem &item, qint64 nowMs)
{
    if (item.expiresAtMs < 1) {
        return {};
    }
    if (isApprovalExpired(item, nowMs)) {
        return QCoreApplication::translate("Words", "expired");
    }
    const qint64 seconds = (item.expiresAtMs - nowMs + 999) / 1000;
    return seconds < 120
        ? QCoreApplication::translate("Words", "expires in %1 s").arg(seconds)
        : QCoreApplication::translate("Words", "expires in %1 min").arg(seconds / 60);
}

QString practiceMark()
{
    return QCoreApplication::translate("Words", "PRACTICE");
}

QString practiceSentence()
{
    return QCoreApplication::translate("Words",
                                       "PRACTICE: gateway, chat, tokens and requests are made up");
}

} // namespace bram
