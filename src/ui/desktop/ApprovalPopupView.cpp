// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ApprovalPopupView.h"

#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "ui/desktop/ArmingGuard.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/DecisionButton.h"
#include "ui/desktop/ElidedLabel.h"
#include "ui/desktop/WarningColours.h"
#include "ui/language/Words.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPropertyAnimation>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qreal textPoints = 12;
constexpr qreal smallPoints = 9;
constexpr qreal smallestPoints = 8;
constexpr int spacing = 8;
constexpr int armingLineHeight = 3;
constexpr int leastCommandRows = 3;

const QString allowOnceText = u"일시 승인"_s;
const QString allowAlwaysText = u"영구 승인"_s;
const QString denyText = u"거부"_s;
const QColor riskBackground(0xc6, 0x28, 0x28);
const QColor markBackground(0x15, 0x65, 0xc0);

QFont withPoints(QFont font, qreal points)
{
    font.setPointSizeF(points);
    return font;
}

template<typename Label>
Label *addLabel(QBoxLayout *layout, qreal points)
{
    auto *label = new Label(layout->parentWidget());
    label->setTextFormat(Qt::PlainText);
    label->setFont(withPoints(label->font(), points));
    layout->addWidget(label);
    return label;
}

/// Rounded up: as long as any time is left, it is not 0:00.
QString clockText(qint64 leftMs)
{
    const qint64 seconds = (leftMs + 999) / 1000;
    const auto twoDigits = [](qint64 n) { return u"%1"_s.arg(n, 2, 10, QChar(u'0')); };
    const QString tail = u':' + twoDigits(seconds % 60);
    return seconds < 3600
        ? QString::number(seconds / 60) + tail
        : QString::number(seconds / 3600) + u':' + twoDigits(seconds / 60 % 60) + tail;
}

qsizetype codePointCount(const QString &text)
{
    return std::ranges::count_if(text, [](QChar c) { return !c.isLowSurrogate(); });
}
} // namespace

ApprovalPopupView::ApprovalPopupView(Actions actions, QWidget *parent)
    : QWidget(parent)
    , m_actions(std::move(actions))
{
    build();
    m_arming = new QPropertyAnimation(this, "armingProgress", this);
    m_arming->setDuration(int(ArmingGuard::stillnessMs));
    m_arming->setStartValue(0.0);
    m_arming->setEndValue(1.0);
    connect(m_command, &CommandTextView::wholeChanged, this, [this] { relabelLength(); });
    connect(m_command, &CommandTextView::endSeen, this, [this] {
        relabelLength();
        enableButtons();
        relabelHint();
    });
    connect(m_command->verticalScrollBar(), &QScrollBar::rangeChanged, this, [this] {
        if (isEndAwaited() != m_length->font().bold()) {
            relabelLength();
        }
    });
    relabel();
    recolour();
}

void ApprovalPopupView::build()
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(spacing, spacing, spacing, spacing);
    column->setSpacing(spacing);

    auto *head = new QHBoxLayout;
    column->addLayout(head);
    m_id = addLabel<ElidedLabel>(head, textPoints);
    head->setStretchFactor(m_id, 1);
    m_mark = addLabel<QLabel>(head, smallPoints);
    m_mark->setContentsMargins(6, 1, 6, 1);
    m_mark->setAutoFillBackground(true);
    m_mark->hide();
    m_length = addLabel<QLabel>(head, smallestPoints);
    m_length->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *notices = new QHBoxLayout;
    column->addLayout(notices);
    m_risk = addLabel<QLabel>(notices, smallPoints);
    m_risk->setContentsMargins(6, 1, 6, 1);
    m_risk->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    m_risk->setAutoFillBackground(true);
    m_notices = addLabel<QLabel>(notices, smallPoints);
    m_notices->setWordWrap(true);
    notices->setStretchFactor(m_notices, 1);
    notices->addStretch();

    m_command = new CommandTextView(this);
    m_command->setMinimumHeight(leastCommandRows * QFontMetrics(m_command->font()).height()
                                + 2 * spacing);
    column->addWidget(m_command, 1);

    m_hint = addLabel<QLabel>(column, textPoints);
    m_hint->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *foot = new QHBoxLayout;
    foot->setSpacing(spacing);
    column->addLayout(foot);
    auto *facts = new QVBoxLayout;
    facts->setSpacing(0);
    foot->addLayout(facts, 1);
    m_agent = addLabel<ElidedLabel>(facts, smallPoints);
    m_expiry = addLabel<ElidedLabel>(facts, smallPoints);
    m_state = addLabel<ElidedLabel>(facts, smallPoints);
    facts->addStretch();
    foot->addStrut(3 * m_state->sizeHint().height()); // as many as there can be
    const auto withKey
        = [](Qt::Key key) { return QKeySequence(Qt::CTRL | Qt::ALT | Qt::SHIFT | key); };
    addButton(m_allowOnce, allowOnceText, withKey(Qt::Key_O), m_actions.onAllowOnce);
    addButton(m_allowAlways, allowAlwaysText, withKey(Qt::Key_A), m_actions.onAllowAlways);
    addButton(m_deny, denyText, withKey(Qt::Key_D), m_actions.onDeny);
    for (auto *button : {m_allowOnce, m_allowAlways, m_deny}) {
        foot->addWidget(button);
    }
    // Of the answers, Tab comes first to the one that does no harm.
    setTabOrder(m_command, m_deny);
    setTabOrder(m_deny, m_allowOnce);
    setTabOrder(m_allowOnce, m_allowAlways);
}

void ApprovalPopupView::addButton(DecisionButton *&button, const QString &fixedText,
                                  const QKeySequence &shortcut, const std::function<void()> &action)
{
    button = new DecisionButton(fixedText, shortcut, this);
    button->setFont(withPoints(button->font(), textPoints));
    button->setEnabled(false);
    connect(button, &QAbstractButton::clicked, this, action);
    auto *keys = new QShortcut(shortcut, this);
    keys->setAutoRepeat(false);
    connect(keys, &QShortcut::activated, this, action);
}

void ApprovalPopupView::setItem(const ApprovalItem &item, Occasion occasion, AskReason reason)
{
    m_item = item;
    m_occasion = occasion;
    m_reason = reason;
    m_outcome.reset();
    m_leftMs.reset();
    m_needsScrolling = false;
    m_hint->hide();
    m_command->setCommand(item.command);
    m_command->setFocus();
    relabel();
    announce();
}

void ApprovalPopupView::setOutcome(ApprovalHistoryState state, qint64 nowMs)
{
    m_outcome = state;
    m_outcomeIsExpiry = isApprovalExpired(m_item, nowMs);
    m_leftMs.reset();
    relabel();
    announce();
}

/// To those who have the screen read to them.
void ApprovalPopupView::announce()
{
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void ApprovalPopupView::setTimeLeft(std::optional<qint64> leftMs)
{
    m_leftMs = leftMs;
    relabelState();
}

void ApprovalPopupView::setWaitingCount(qsizetype count)
{
    m_waitingCount = count;
    relabelState();
}

void ApprovalPopupView::setProblem(const QString &problem)
{
    if (problem != m_problem) {
        m_problem = problem;
        relabelNotices();
        Q_EMIT contentChanged();
    }
}

void ApprovalPopupView::setMark(const QString &mark)
{
    m_mark->setText(mark);
    m_mark->setVisible(!mark.isEmpty());
    Q_EMIT contentChanged();
}

void ApprovalPopupView::setAnswering(Answering answering)
{
    m_answering = answering;
    enableButtons();
    m_arming->stop();
    setArmingProgress(answering == Answering::On ? 1 : 0);
    if (answering == Answering::Arming) {
        m_arming->start();
    }
    relabelHint();
    relabelState();
}

void ApprovalPopupView::enableButtons()
{
    for (auto *button : {m_allowOnce, m_allowAlways, m_deny}) {
        const bool answers = m_answering == Answering::On && (button == m_deny || mayAllow());
        if (!answers && button->hasFocus()) {
            m_command->setFocus(); // before the focus moves on to another button by itself
        }
        button->setEnabled(answers);
    }
}

void ApprovalPopupView::setKeysAnswer(bool keysAnswer)
{
    for (auto *button : {m_allowOnce, m_allowAlways, m_deny}) {
        button->setKeysAnswer(keysAnswer);
    }
}

bool ApprovalPopupView::mayAllow() const
{
    return m_command->isEndSeen() || m_allowsPartlyShown;
}

void ApprovalPopupView::setAllowsPartlyShown(bool allows)
{
    m_allowsPartlyShown = allows;
    enableButtons();
    relabelHint();
}

void ApprovalPopupView::setArmingProgress(qreal progress)
{
    m_armingProgress = progress;
    update(0, m_allowOnce->y() - spacing, width(), spacing);
}

QSize ApprovalPopupView::fit(QSize least, QSize most)
{
    const QSize smallest = leastSize(least);
    const QSize around(2 * spacing, leastHeight(smallest.width()) - m_command->minimumHeight());
    const CommandFit command
        = m_command->fit(smallest - around, most.expandedTo(smallest) - around);
    m_needsScrolling = !command.isWhole;
    relabelHint();
    return (command.size + around).expandedTo(leastSize(least));
}

int ApprovalPopupView::leastHeight(int width) const
{
    return layout()->hasHeightForWidth() ? layout()->minimumHeightForWidth(width)
                                         : layout()->totalMinimumSize().height();
}

QSize ApprovalPopupView::leastSize(QSize least) const
{
    const int width = std::max(least.width(), layout()->totalMinimumSize().width());
    return {width, std::max(least.height(), leastHeight(width))};
}

void ApprovalPopupView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        relabel();
    } else if (event->type() == QEvent::PaletteChange) {
        recolour();
    }
}

/// The line that grows while the buttons wait.
void ApprovalPopupView::paintEvent(QPaintEvent *)
{
    if (m_answering != Answering::Arming) {
        return;
    }
    QPainter painter(this);
    const int left = m_allowOnce->x();
    const int whole = m_deny->geometry().right() + 1 - left;
    const QRect line(left, m_allowOnce->y() - (spacing + armingLineHeight) / 2,
                     int(whole * m_armingProgress), armingLineHeight);
    painter.fillRect(line, palette().color(QPalette::Highlight));
}

void ApprovalPopupView::relabel()
{
    m_id->setWholeText(u"ID: "_s + honestLine(m_item.approvalId).text);
    const QString agent = m_item.agentId.value_or(QString());
    m_agent->setWholeText(
        tr("Agent: %1").arg(agent.isEmpty() ? tr("not named") : honestLine(agent).text));
    m_allowOnce->setGloss(tr("Allow once"));
    m_allowAlways->setGloss(tr("Always allow"));
    m_deny->setGloss(tr("Deny"));
    relabelNotices();
    relabelLength();
    relabelHint();
    relabelState();
}

void ApprovalPopupView::relabelNotices()
{
    m_risk->setText(tr("HIGH RISK"));
    m_risk->setVisible(commandRiskLevel(m_item.command) == CommandRisk::High);
    QStringList notices;
    if (m_outcome) {
        notices.append(outcomeText());
    } else {
        if (m_occasion == Occasion::Changed) {
            notices.append(tr("This request has changed: read it again."));
        }
        if (m_command->isSuspicious()) {
            notices.append(tr("Misleading characters, shown as ⟨…⟩."));
        }
        notices.append(askReasonWords(m_reason));
        notices.append(m_problem);
        notices.removeAll(QString());
    }
    m_notices->setText(notices.join(u' '));
    m_notices->setVisible(!notices.isEmpty());
    setAccessibleDescription(m_risk->isHidden() ? m_notices->text()
                                                : m_risk->text() + u' ' + m_notices->text());
}

bool ApprovalPopupView::isEndAwaited() const
{
    return !m_command->isAllVisible() && !m_command->isEndSeen();
}

void ApprovalPopupView::relabelLength()
{
    const qsizetype lines = m_item.command.count(u'\n') + 1;
    const qsizetype characters = codePointCount(m_item.command);
    const QString charactersText
        = characters == 1 ? tr("1 character") : tr("%L1 characters").arg(characters);
    const QString text
        = lines == 1 ? charactersText : tr("%L1 lines").arg(lines) + u'\n' + charactersText;
    const bool isAwaited = isEndAwaited();
    m_length->setText(isAwaited ? u"↓ "_s + text : text);
    QFont font = m_length->font();
    font.setBold(isAwaited);
    m_length->setFont(font);
    m_length->setToolTip(isAwaited ? tr("Scroll to read all of the command.") : QString());
}

void ApprovalPopupView::relabelState()
{
    QString expiry;
    if (m_leftMs) {
        expiry = *m_leftMs > 0 ? tr("expires in %1").arg(clockText(*m_leftMs)) : tr("expired");
    }
    const QString state
        = m_waitingCount > 0 ? tr("%L1 more waiting").arg(m_waitingCount) : QString();
    m_expiry->setWholeText(expiry);
    m_expiry->setVisible(!expiry.isEmpty());
    m_state->setWholeText(state);
    m_state->setVisible(!state.isEmpty());
    Q_EMIT contentChanged();
}

/// What the person has to do before the buttons answer.
void ApprovalPopupView::relabelHint()
{
    QString hint;
    if (m_answering == Answering::NeedsActivation) {
        hint = tr("Click here first");
    } else if (!m_outcome && !mayAllow() && (m_needsScrolling || m_answering == Answering::On)) {
        hint = tr("Scroll to the end to allow");
    }
    if (!hint.isEmpty()) {
        m_hint->show();
    }
    m_hint->setText(hint.isEmpty() ? u" "_s
                                   : hint); // the room stays: nothing moves under the pointer
}

void ApprovalPopupView::recolour()
{
    QPalette risk = palette();
    risk.setColor(QPalette::Window, riskBackground);
    risk.setColor(QPalette::WindowText, Qt::white);
    m_risk->setPalette(risk);
    QFont bold = m_risk->font();
    bold.setBold(true);
    m_risk->setFont(bold);
    QPalette mark = palette();
    mark.setColor(QPalette::Window, markBackground);
    mark.setColor(QPalette::WindowText, Qt::white);
    m_mark->setPalette(mark);
    m_mark->setFont(bold);
    QPalette notice = palette();
    notice.setColor(QPalette::WindowText, warningColour(palette()));
    m_notices->setPalette(notice);
    m_notices->setFont(bold);
    m_hint->setFont(withPoints(bold, textPoints));
}

QString ApprovalPopupView::outcomeText() const
{
    switch (*m_outcome) {
    case ApprovalHistoryState::Pending:
        return {};
    case ApprovalHistoryState::AllowOnce:
        return tr("This request was allowed once.");
    case ApprovalHistoryState::AllowAlways:
        return tr("This request was allowed always.");
    case ApprovalHistoryState::Deny:
        return tr("This request was denied.");
    case ApprovalHistoryState::Canceled:
        return m_outcomeIsExpiry ? tr("This request has expired.")
                                 : tr("This request was withdrawn.");
    case ApprovalHistoryState::Resolved:
        return tr("This request was decided elsewhere.");
    }
    Q_UNREACHABLE();
}

} // namespace bram
