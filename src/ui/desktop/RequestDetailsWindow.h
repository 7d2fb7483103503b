// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"

#include <QTimer>
#include <QWidget>

class QFormLayout;
class QLabel;
class QLayout;
class QPushButton;

namespace bram
{

class AllowGate;
class Clock;
class CommandTextView;
class ElidedLabel;
class StoredSwitch;

/// What there is to know about a request: one that is pending, or a row of the history.
struct RequestDetails {
    ApprovalItem item; ///< of a history row only id and command, which may be empty
    ApprovalHistoryState state = ApprovalHistoryState::Pending;
    qint64 updatedAtMs = 0; ///< when the state last changed; 0: not known
    DecisionMaker maker = DecisionMaker::Person; ///< of a decision taken here
    AskReason askReason = AskReason::Usual; ///< of a pending request
    bool isCut = false; ///< only the beginning of the command is kept

    bool operator==(const RequestDetails &) const = default;

    static RequestDetails of(const ApprovalItem &item, AskReason reason = AskReason::Usual);
    static RequestDetails of(const ApprovalHistoryEntry &entry);
};

/// Shows one request whole, beside the other windows. One that is pending can be decided there, and allowed once
/// it could be read (`AllowGate`). Made when first needed and used again. Hidden it keeps nothing: a command may
/// have megabytes.
class RequestDetailsWindow final : public QWidget
{
    Q_OBJECT

public:
    explicit RequestDetailsWindow(const Clock &clock);

    /// In place of what it shows; in front.
    void open(const bram::RequestDetails &details);
    const RequestDetails &details() const { return m_details; }
    /// The pending request that it shows has ended or changed: it goes on being shown, and cannot be decided.
    void setOver();
    void setAllowPartlyShown(const StoredSwitch &allowPartlyShown);

Q_SIGNALS:
    void decisionChosen(const bram::ApprovalItem &item, bram::ApprovalDecision decision);
    /// The end of the pending request's command has been in view.
    void read(const bram::ApprovalItem &item);

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void build();
    void buildDecisions(QLayout &row);
    ElidedLabel *addRow(QFormLayout *form);
    void relabel();
    QString expiryText() const;
    void recolour();

    const Clock &m_clock;
    QTimer m_secondHand; ///< runs while it can be seen
    RequestDetails m_details;
    QFormLayout *m_form = nullptr;
    ElidedLabel *m_id = nullptr;
    ElidedLabel *m_agent = nullptr;
    ElidedLabel *m_state = nullptr;
    ElidedLabel *m_created = nullptr;
    ElidedLabel *m_expires = nullptr;
    QLabel *m_warning = nullptr;
    CommandTextView *m_command = nullptr;
    QLabel *m_hint = nullptr;
    QPushButton *m_allowOnce = nullptr;
    QPushButton *m_alwaysAllow = nullptr;
    QPushButton *m_deny = nullptr;
    AllowGate *m_gate = nullptr;
    QPushButton *m_copyDetails = nullptr;
    QPushButton *m_copyId = nullptr;
    QPushButton *m_close = nullptr;
};

} // namespace bram
