// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/AskReason.h"
#include "monitor/MonitorPorts.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>

namespace bram
{

class ApprovalPopupView;
class ApprovalPopupWindow;
class ArmingWatch;
class Clock;
class StoredSwitch;

/// The popup: shows one request at a time and calls back with what the person decides, or with nothing when
/// they close it. The window is made when it is first needed, and used again.
///
/// Buttons and shortcuts answer only while armed (see `ArmingGuard`), and allow only after the end of the
/// command has been in view. Closing needs neither, only that the request has been on the screen for a
/// moment: it decides nothing. What is shown never changes under a
/// mouse button that is held down: what comes then is shown after its release, and the older one can no
/// longer be answered. Main thread.
class ApprovalPopupPresenter final : public QObject, public ApprovalPopup
{
    Q_OBJECT

public:
    explicit ApprovalPopupPresenter(const Clock &clock);
    ~ApprovalPopupPresenter() override;

    /// The completion is called once, unless the request is replaced or dismissed before.
    void present(const ApprovalItem &item, Completion completion) override;
    void dismiss() override;

    /// Takes it off the screen for good: the program ends.
    void stop();

    /// To be called in the turn of the event loop in which the request is dismissed, before or after it:
    /// says for a moment what became of the request, if it is the one shown. What is presented
    /// meanwhile comes after that moment.
    void showOutcome(const QString &approvalId, bram::ApprovalHistoryState state);

    /// Whom to ask why a person is asked about a request.
    void setAskReasons(std::function<AskReason(const QString &approvalId)> reasons);

    /// While it is on, a command is also allowed whose end has not been in view. Outlives the presenter.
    void followAllowPartlyShown(const StoredSwitch &allowPartlyShown);

    /// What is shown beside every request, as that it is an exercise; empty for nothing.
    void setMark(const QString &mark);
    /// Something of the program's own that a person must know before deciding; empty for nothing.
    void setProblem(const QString &problem);

    /// How many requests wait beside the one that is shown.
    void setWaitingCount(qsizetype count);

Q_SIGNALS:
    /// The end of the request's command has been in view.
    void read(const bram::ApprovalItem &item);

private:
    struct Presentation {
        ApprovalItem item;
        Completion completion; ///< empty when it may no longer be answered
    };

    void build();
    void showNow(Presentation presentation);
    void showHeldOrHide();
    void hide();
    void decide(ApprovalDecision decision);
    void closeIfSeen();
    void closeUndecided();
    void complete(std::optional<ApprovalDecision> decision);
    void withdrawCompletion();
    void updateAnswering();
    void updateTimeLeft();
    bool showsMoment() const { return m_moment.isActive(); }
    QSize fittingSize();

    const Clock &m_clock;
    std::function<AskReason(const QString &)> m_askReasons;
    std::unique_ptr<ApprovalPopupWindow> m_window;
    ApprovalPopupView *m_view = nullptr; ///< in the window
    std::unique_ptr<ArmingWatch> m_watch;
    std::optional<Presentation> m_shown; ///< what the window shows; absent while it is hidden
    std::optional<Presentation> m_held; ///< what it will show
    QElapsedTimer m_shownSince; ///< in this form
    bool m_isStopped = false;
    quint64 m_presentCount = 0;
    qsizetype m_waitingCount = 0;
    bool m_allowsPartlyShown = false;
    QString m_mark;
    QString m_problem;
    QTimer m_moment; ///< runs while the window says what became of a request
    QTimer
        m_closing; ///< runs from a dismissal to the next turn, when the window is changed or hidden
    QTimer m_secondHand;
    QTimer m_activation; ///< runs while the window may yet be given the keyboard
};

} // namespace bram
