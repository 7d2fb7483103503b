// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowVerdict.h"
#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"

#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace bram
{

// What the coordinator asks of parts that a given front-end or build may not have. Each is called on the
// main thread. An absent one is a null pointer in `MonitorPorts`, and its step does not happen.

/// The commands that need no question. Implemented by the always-allow list.
class AlwaysAllowRules
{
public:
    virtual ~AlwaysAllowRules() = default;
    virtual AlwaysAllowVerdict verdict(const QString &command) const = 0;
    /// A person has allowed this command always, and the gateway has confirmed it.
    virtual void remember(const QString &command) = 0;
};

/// Whose requests are shown. Implemented by the choice of agent; without it, everybody's.
class AgentFilter
{
public:
    virtual ~AgentFilter() = default;
    virtual bool matches(const ApprovalItem &item) const = 0;
};

/// The window that asks about one request at a time. Implemented by the desktop front-end.
class ApprovalPopup
{
public:
    virtual ~ApprovalPopup() = default;
    /// Called when the person has answered; without a decision when the window was just closed.
    using Completion = std::function<void(std::optional<ApprovalDecision>)>;
    /// Shows the request, in place of what is shown: another one, or an older form of the same. For one that asks
    /// what is shown already (`isSameQuestion`) only the time and the completion are new.
    virtual void present(const ApprovalItem &item, Completion completion) = 0;
    virtual void dismiss() = 0;
};

/// The desktop's notifications. Implemented by `ApprovalNotifications`.
class ApprovalNotifier
{
public:
    virtual ~ApprovalNotifier() = default;
    virtual void schedule(const ApprovalItem &item) = 0;
    /// The request has changed: so does its notification, if it is still there.
    virtual void update(const ApprovalItem &item) = 0;
    /// The request asks the same as before, within another time: nothing new is shown.
    virtual void updateTimes(const ApprovalItem &item) = 0;
    virtual void withdraw(const QString &approvalId) = 0;
};

/// Shows all pending requests elsewhere. Implemented by the Telegram bridge.
class PendingMirror
{
public:
    virtual ~PendingMirror() = default;
    virtual void update(const QList<ApprovalItem> &items) = 0;
};

struct MonitorPorts {
    AlwaysAllowRules *alwaysAllow = nullptr;
    AgentFilter *agentFilter = nullptr;
    ApprovalPopup *popup = nullptr;
    ApprovalNotifier *notifier = nullptr;
    PendingMirror *mirror = nullptr;
};

} // namespace bram
