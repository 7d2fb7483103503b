// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"

#include <QWidget>

class QFormLayout;
class QLabel;
class QPushButton;

namespace bram
{

class CommandTextView;
class ElidedLabel;

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

/// Shows one request whole, beside the other windows, without deciding anything. Made when first needed and
/// used again. Hidden it keeps nothing: a command may have megabytes.
class RequestDetailsWindow final : public QWidget
{
    Q_OBJECT

public:
    RequestDetailsWindow();

    /// In place of what it shows; in front.
    void open(const bram::RequestDetails &details);
    const RequestDetails &details() const { return m_details; }

protected:
    void changeEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void build();
    ElidedLabel *addRow(QFormLayout *form);
    void relabel();
    void recolour();

    RequestDetails m_details;
    QFormLayout *m_form = nullptr;
    ElidedLabel *m_id = nullptr;
    ElidedLabel *m_agent = nullptr;
    ElidedLabel *m_state = nullptr;
    ElidedLabel *m_created = nullptr;
    ElidedLabel *m_expires = nullptr;
    QLabel *m_warning = nullptr;
    CommandTextView *m_command = nullptr;
    QPushButton *m_copyDetails = nullptr;
    QPushButton *m_copyId = nullptr;
    QPushButton *m_close = nullptr;
};

} // namespace bram
