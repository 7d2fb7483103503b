// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ApprovalPopupPresenter.h"

#include "config/StoredSwitch.h"
#include "system/Clock.h"
#include "ui/desktop/ApprovalPopupView.h"
#include "ui/desktop/ApprovalPopupWindow.h"
#include "ui/desktop/ArmingWatch.h"
#include "ui/desktop/CommandTextView.h"

#include <utility>

namespace bram
{

namespace
{
using Answering = ApprovalPopupView::Answering;
using Occasion = ApprovalPopupView::Occasion;
using namespace std::chrono_literals;

constexpr QSize contentSize(500, 220);
constexpr auto outcomeMoment = 1500ms;
constexpr auto activationMoment = 500ms;
} // namespace

ApprovalPopupPresenter::ApprovalPopupPresenter(const Clock &clock)
    : m_clock(clock)
{
    for (QTimer *timer : {&m_moment, &m_closing, &m_secondHand, &m_activation}) {
        timer->setSingleShot(true);
    }
    connect(&m_moment, &QTimer::timeout, this, &ApprovalPopupPresenter::showHeldOrHide);
    connect(&m_closing, &QTimer::timeout, this, &ApprovalPopupPresenter::showHeldOrHide);
    connect(&m_secondHand, &QTimer::timeout, this, &ApprovalPopupPresenter::updateTimeLeft);
    connect(&m_activation, &QTimer::timeout, this, [this] {
        if (!m_window->isActiveWindow()) {
            updateAnswering();
        }
    });
}

ApprovalPopupPresenter::~ApprovalPopupPresenter() = default;

void ApprovalPopupPresenter::build()
{
    m_window = std::make_unique<ApprovalPopupWindow>();
    m_view
        = new ApprovalPopupView({.onAllowOnce = [this] { decide(ApprovalDecision::AllowOnce); },
                                 .onAllowAlways = [this] { decide(ApprovalDecision::AllowAlways); },
                                 .onDeny = [this] { decide(ApprovalDecision::Deny); }},
                                m_window.get());
    m_window->setContent(m_view);
    m_view->setWaitingCount(m_waitingCount);
    m_view->setAllowsPartlyShown(m_allowsPartlyShown);
    m_view->setMark(m_mark);
    m_view->setProblem(m_problem);
    m_watch = std::make_unique<ArmingWatch>(*m_window);
    connect(m_window.get(), &ApprovalPopupWindow::closeRequested, this,
            &ApprovalPopupPresenter::closeIfSeen);
    connect(m_window.get(), &ApprovalPopupWindow::escapePressed, this,
            &ApprovalPopupPresenter::closeIfSeen);
    connect(m_watch.get(), &ArmingWatch::keysAnswerChanged, this,
            [this] { m_view->setKeysAnswer(m_watch->keysAnswer()); });
    connect(m_watch.get(), &ArmingWatch::stateChanged, this,
            &ApprovalPopupPresenter::updateAnswering);
    connect(m_watch.get(), &ArmingWatch::released, this, [this] {
        if (m_held && !showsMoment()) {
            showHeldOrHide();
        }
    });
    connect(&m_view->commandView(), &CommandTextView::wholeChanged, this,
            [this] { m_watch->setReady(m_view->commandView().isWhole()); });
    connect(&m_view->commandView(), &CommandTextView::endSeen, this, [this] {
        if (m_shown && m_view->commandView().isEndSeen()) {
            Q_EMIT read(ApprovalItem(m_shown->item));
        }
    });
    connect(m_view, &ApprovalPopupView::contentChanged, this, [this] {
        if (m_shown) {
            m_window->setContentSize(fittingSize());
        }
    });
}

void ApprovalPopupPresenter::setProblem(const QString &problem)
{
    m_problem = problem;
    if (m_view != nullptr) {
        m_view->setProblem(problem);
    }
}

void ApprovalPopupPresenter::setMark(const QString &mark)
{
    m_mark = mark;
    if (m_view != nullptr) {
        m_view->setMark(mark);
    }
}

void ApprovalPopupPresenter::present(const ApprovalItem &item, Completion completion)
{
    if (m_isStopped) {
        return;
    }
    ++m_presentCount;
    Presentation presentation {item, std::move(completion)};
    if (m_shown && m_shown->completion && !m_held && isSameQuestion(m_shown->item, item)) {
        m_shown = std::move(presentation); // what was read of it stays read
        updateTimeLeft();
        return;
    }
    const bool mustWait
        = m_shown && (showsMoment() || m_closing.isActive() || m_watch->isPressed());
    if (mustWait) {
        withdrawCompletion();
        m_held = std::move(presentation);
    } else {
        showNow(std::move(presentation));
    }
}

void ApprovalPopupPresenter::dismiss()
{
    m_held.reset();
    if (m_shown && !showsMoment()) {
        withdrawCompletion();
        m_closing.start(
            0); // what became of it may be said in this turn, or another one take its place
    }
}

void ApprovalPopupPresenter::stop()
{
    m_isStopped = true;
    m_held.reset();
    if (m_shown) {
        withdrawCompletion();
        m_moment.stop();
        m_closing.stop();
        hide();
    }
}

void ApprovalPopupPresenter::showOutcome(const QString &approvalId, ApprovalHistoryState state)
{
    if (m_held && m_held->item.approvalId == approvalId) {
        m_held.reset();
    }
    if (!m_shown || m_shown->item.approvalId != approvalId || showsMoment()) {
        return;
    }
    withdrawCompletion();
    m_closing.stop();
    m_secondHand.stop();
    m_view->setOutcome(state, m_clock.nowMs());
    m_moment.start(outcomeMoment);
}

void ApprovalPopupPresenter::setAskReasons(
    std::function<AskReason(const QString &approvalId)> reasons)
{
    m_askReasons = std::move(reasons);
}

void ApprovalPopupPresenter::followAllowPartlyShown(const StoredSwitch &allowPartlyShown)
{
    const auto take = [this](bool isOn) {
        m_allowsPartlyShown = isOn;
        if (m_view != nullptr) {
            m_view->setAllowsPartlyShown(isOn);
        }
    };
    connect(&allowPartlyShown, &StoredSwitch::changed, this, take);
    take(allowPartlyShown.isOn());
}

void ApprovalPopupPresenter::setWaitingCount(qsizetype count)
{
    m_waitingCount = count;
    if (m_view != nullptr) {
        m_view->setWaitingCount(count);
    }
}

void ApprovalPopupPresenter::showNow(Presentation presentation)
{
    if (!m_window) {
        build();
    }
    const bool isChange = m_shown && m_shown->item.approvalId == presentation.item.approvalId
        && !isSameQuestion(m_shown->item, presentation.item);
    m_shown = std::move(presentation);
    m_watch->setReady(false);
    m_view->setItem(m_shown->item, isChange ? Occasion::Changed : Occasion::New,
                    m_askReasons ? m_askReasons(m_shown->item.approvalId) : AskReason::Usual);
    updateTimeLeft();
    m_window->showInFront(fittingSize());
    m_watch->setReady(m_view->commandView().isWhole());
    m_shownSince.start();
    m_watch->restart();
    m_activation.start(activationMoment);
    updateAnswering();
}

void ApprovalPopupPresenter::showHeldOrHide()
{
    m_moment.stop();
    m_closing.stop();
    if (!m_held) {
        hide();
    } else if (!m_watch->isPressed()) {
        showNow(*std::exchange(m_held, std::nullopt));
    }
}

void ApprovalPopupPresenter::hide()
{
    m_secondHand.stop();
    m_activation.stop();
    m_shown.reset();
    m_window->hide();
}

void ApprovalPopupPresenter::decide(ApprovalDecision decision)
{
    const bool counts = decision == ApprovalDecision::Deny || m_view->mayAllow();
    if (m_shown && m_shown->completion && m_watch->isArmed() && counts) {
        complete(decision);
    }
}

/// What was meant for another window, be it Escape, Alt+F4 or the second click of a double click, must not
/// make the question vanish unseen.
void ApprovalPopupPresenter::closeIfSeen()
{
    if (showsMoment() || m_watch->isArmed() || m_shownSince.elapsed() >= ArmingGuard::stillnessMs) {
        closeUndecided();
    }
}

void ApprovalPopupPresenter::closeUndecided()
{
    if (!m_shown) {
        return;
    }
    if (m_shown->completion) {
        complete(std::nullopt);
    } else {
        showHeldOrHide();
    }
}

void ApprovalPopupPresenter::complete(std::optional<ApprovalDecision> decision)
{
    const auto completion = std::exchange(m_shown->completion, nullptr);
    updateAnswering();
    const auto presented = m_presentCount;
    completion(decision);
    // The callee may have presented the next request, or have found that this one has ended.
    if (m_presentCount == presented && !showsMoment() && !m_closing.isActive()) {
        hide();
    }
}

void ApprovalPopupPresenter::withdrawCompletion()
{
    m_shown->completion = nullptr;
    updateAnswering();
}

void ApprovalPopupPresenter::updateAnswering()
{
    if (!m_shown || !m_shown->completion) {
        m_view->setAnswering(Answering::Off);
        return;
    }
    m_view->setAnswering(m_watch->isArmed()        ? Answering::On
                             : m_watch->isArming() ? Answering::Arming
                             : m_window->isActiveWindow() || m_activation.isActive()
                             ? Answering::Off
                             : Answering::NeedsActivation);
}

void ApprovalPopupPresenter::updateTimeLeft()
{
    if (m_shown->item.expiresAtMs < 1) {
        m_secondHand.stop();
        m_view->setTimeLeft(std::nullopt);
        return;
    }
    const qint64 leftMs = m_shown->item.expiresAtMs - m_clock.nowMs();
    m_view->setTimeLeft(leftMs);
    if (leftMs > 0) {
        m_secondHand.start(int((leftMs - 1) % 1000 + 1)); // when the text will be another one
    }
}

QSize ApprovalPopupPresenter::fittingSize()
{
    return m_view->fit(contentSize, m_window->roomForContent());
}

} // namespace bram
