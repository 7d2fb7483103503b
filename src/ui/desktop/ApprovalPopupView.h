// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/AskReason.h"

#include <QWidget>

#include <functional>
#include <optional>

class QLabel;
class QPropertyAnimation;

namespace bram
{

class CommandTextView;
class DecisionButton;
class ElidedLabel;

/// What the popup shows of one request: its id, the whole command, what there is to know before deciding,
/// and three buttons, whose texts are Korean whatever the language of the program.
class ApprovalPopupView final : public QWidget
{
    Q_OBJECT

public:
    struct Actions {
        std::function<void()> onAllowOnce;
        std::function<void()> onAllowAlways;
        std::function<void()> onDeny;
    };
    /// The actions are called for a press on the button and for its shortcut.
    explicit ApprovalPopupView(Actions actions, QWidget *parent = nullptr);

    enum class Occasion {
        New,
        Changed, ///< another form of a request that had been shown
    };
    void setItem(const ApprovalItem &item, Occasion occasion, AskReason reason);
    const ApprovalItem &item() const { return m_item; }
    /// Says in words what became of the request, until the next `setItem`.
    void setOutcome(ApprovalHistoryState state, qint64 nowMs);

    /// Absent when the request does not expire; zero or less once it has.
    void setTimeLeft(std::optional<qint64> leftMs);
    void setWaitingCount(qsizetype count);
    /// Beside the id; empty for none.
    void setMark(const QString &mark);
    /// Stands with what there is to know of the request, in words that are shown as they are.
    void setProblem(const QString &problem);

    enum class Answering {
        Off, ///< for the time being
        NeedsActivation, ///< the window does not have the keyboard
        Arming, ///< soon: a thin line grows until then
        On,
    };
    void setAnswering(Answering answering);

    /// While the focus is new where it is, a button that has it looks as it behaves: it does not answer.
    void setKeysAnswer(bool keysAnswer);

    /// Whether the command may be allowed: its end has been in view, or that is not asked for.
    bool mayAllow() const;
    void setAllowsPartlyShown(bool allows);

    /// The size in which to show all of it, from `least` to `most`; more only where the words around the
    /// command need it.
    QSize fit(QSize least, QSize most);

    CommandTextView &commandView() const { return *m_command; }

Q_SIGNALS:
    /// The size that fits may have changed.
    void contentChanged();

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    Q_PROPERTY(qreal armingProgress READ armingProgress WRITE setArmingProgress)
    qreal armingProgress() const { return m_armingProgress; }
    void setArmingProgress(qreal progress);

    void build();
    void addButton(DecisionButton *&button, const QString &fixedText, const QKeySequence &shortcut,
                   const std::function<void()> &action);
    void relabel();
    void relabelNotices();
    void relabelLength();
    void relabelState();
    void relabelHint();
    bool isEndAwaited() const;
    void enableButtons();
    int leastHeight(int width) const;
    QSize leastSize(QSize least) const;
    void recolour();
    void announce();
    QString outcomeText() const;

    const Actions m_actions;
    ApprovalItem m_item;
    Occasion m_occasion = Occasion::New;
    AskReason m_reason = AskReason::Usual;
    QString m_problem;
    std::optional<ApprovalHistoryState> m_outcome;
    bool m_outcomeIsExpiry = false;
    std::optional<qint64> m_leftMs;
    qsizetype m_waitingCount = 0;
    Answering m_answering = Answering::Off;
    bool m_allowsPartlyShown = false;
    bool m_needsScrolling = false; ///< the screen has no room for all of the command
    qreal m_armingProgress = 0;

    ElidedLabel *m_id = nullptr;
    QLabel *m_mark = nullptr;
    QLabel *m_length = nullptr;
    QLabel *m_risk = nullptr;
    QLabel *m_notices = nullptr;
    CommandTextView *m_command = nullptr;
    QLabel *m_hint = nullptr; ///< takes room from when it is needed, until the next request
    ElidedLabel *m_agent = nullptr;
    ElidedLabel *m_expiry = nullptr;
    ElidedLabel *m_state = nullptr;
    DecisionButton *m_allowOnce = nullptr;
    DecisionButton *m_allowAlways = nullptr;
    DecisionButton *m_deny = nullptr;
    QPropertyAnimation *m_arming = nullptr;
};

} // namespace bram
