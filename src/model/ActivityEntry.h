// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QDateTime>
#include <QHashFunctions>
#include <QString>

namespace bram
{

/// Whose list or side an action touched.
enum class ActivityActor {
    App,
    Brackwen,
    AppAndBrackwen,
};

enum class ActivityAction {
    AllowOnce,
    AllowAlways,
    Deny,
    ApproveAllPending,
    DenyAllPending,
    AlwaysAllowAllPending,
    RefreshAlwaysAllowList,
    BackupAlwaysAllowList,
    RestoreAlwaysAllowList,
    RegisterAlwaysAllowToBrackwen,
    AddToAppList,
    AddAllToAppList,
    RemoveFromAppList,
    RemoveFromBrackwen,
    RemoveFromBoth,
    ClearAppList,
    ClearBrackwenList,
    ClearBothLists,
    PopupQueueFull,
    ReconnectGateway,
    ReloadGatewayToken,
};

/// One row of the activity feed: what the operator or the platform did.
struct ActivityEntry {
    QString id; ///< creation time in ms + "-" + six upper-case hexadecimal digits
    ActivityActor actor = ActivityActor::App;
    ActivityAction action = ActivityAction::AllowOnce;
    QString detail; ///< a command preview, a count ("count=3") or an approval id
    QDateTime createdAt; ///< shown in local time

    bool operator==(const ActivityEntry &) const = default;
};

size_t qHash(const ActivityEntry &entry, size_t seed = 0) noexcept;

} // namespace bram
