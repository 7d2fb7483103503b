// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalItem.h"
#include "model/MenuLanguage.h"

#include <QList>
#include <QObject>

namespace bram
{

class ApprovalMonitor;
class Clock;
class Environment;
class LanguageChoice;

/// What the operator can do from the status menu and the status window, once for both. Main thread.
///
/// Decisions name the request as it was read: one that has changed or ended since is not decided.
class DesktopActions final : public QObject
{
    Q_OBJECT

public:
    struct Collaborators {
        ApprovalMonitor &monitor;
        LanguageChoice &language;
        const Environment &environment;
        const Clock &clock;
    };

    explicit DesktopActions(const Collaborators &collaborators);

    void decide(const ApprovalItem &shown, ApprovalDecision decision);
    /// Decides those of the requests that are still as they were shown, and leaves later ones alone.
    void decideAll(const QList<ApprovalItem> &shown, ApprovalDecision decision);
    /// Denies everything that is pending now and takes the popup off the screen.
    void denyAll();
    void clearPending();
    void clearHistory();

    void copyDetails(const ApprovalItem &item);
    void copyId(const QString &approvalId);
    /// Everything displayed, as text, on the clipboard.
    void copyAll();

    void reconnectGateway();
    void reloadGatewayToken();
    void openControlUI();
    void chooseLanguage(MenuLanguage language);

Q_SIGNALS:
    /// A decision was not taken because the request is no longer the one that was read.
    void changedSinceShown(const QString &approvalId);
    void detailsRequested(const QString &approvalId);
    void windowRequested();
    void aboutRequested();
    void simulationRequested();
    void quitRequested();

private:
    bool isAsShown(const ApprovalItem &shown) const;

    Collaborators m_collaborators;
};

} // namespace bram
