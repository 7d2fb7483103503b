// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/AlwaysAllowListActions.h"

#include <QCoro/QCoroTask>
#include <QPointer>
#include <QWidget>

class QSplitter;

namespace bram
{

class ActivityPane;
class AlwaysAllowEntryPane;
class AlwaysAllowListPane;
class AlwaysAllowOperations;
class ApprovalBoard;
class AuditLogStore;
class BackgroundTasks;
class Clock;
class OperatorPrompts;
class RecordActions;
class RecordPane;
class SystemLog;

/// The approval list manager: what is always allowed, and what can be done about it. A thin view: each control
/// calls one operation, and what is shown follows the published lists. Escape closes it.
class AlwaysAllowWindow final : public QWidget
{
    Q_OBJECT

public:
    struct Collaborators {
        AlwaysAllowOperations &operations;
        RecordActions &record;
        const ApprovalBoard &board;
        AuditLogStore &audit;
        OperatorPrompts &prompts;
        BackgroundTasks &tasks;
        const Clock &clock;
        SystemLog &log;
    };

    explicit AlwaysAllowWindow(const Collaborators &collaborators);
    ~AlwaysAllowWindow() override;

    void retranslate();

Q_SIGNALS:
    void closed();

protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    using Self = QPointer<AlwaysAllowWindow>;

    void build();
    void followWishes();
    void showEntries();
    void carryOut(AlwaysAllowListActions::Action action);
    void setOperable(bool operable);
    /// Starts an operation, and none other until it has ended.
    template<typename Result>
    void start(QCoro::Task<Result> operation);
    template<typename Result>
    static QCoro::Task<> awaiting(Self self, QCoro::Task<Result> operation);

    const Collaborators m_collaborators;
    RecordPane *m_record;
    AlwaysAllowListActions *m_actions;
    AlwaysAllowListPane *m_list;
    AlwaysAllowEntryPane *m_entry;
    ActivityPane *m_activity;
    QSplitter
        *m_entries; ///< the list and what is known of an entry, side by side where there is room
    bool m_isOperable = true;
    QPointer<QWidget> m_focusBefore; ///< what had the keyboard when an operation began
    QPointer<QWidget> m_focusMeanwhile; ///< what has it until the operator puts it elsewhere
};

} // namespace bram
