// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RequestDetailsWindow.h"

#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "system/Clock.h"
#include "ui/desktop/AllowGate.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/ElidedLabel.h"
#include "ui/desktop/WarningColours.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QDateTime>
#include <QEvent>
#include <QFormLayout>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QSize firstSize(640, 420);

QString timeText(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(u"yyyy-MM-dd HH:mm:ss");
}

QString cutNote()
{
    return RequestDetailsWindow::tr("Only the beginning of the command is kept.");
}

void copy(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}
} // namespace

RequestDetails RequestDetails::of(const ApprovalItem &item, AskReason reason)
{
    return {.item = item, .askReason = reason};
}

RequestDetails RequestDetails::of(const ApprovalHistoryEntry &entry)
{
    return {.item
            = {.approvalId = entry.approvalId, .command = entry.command, .agentId = std::nullopt},
            .state = entry.state,
            .updatedAtMs = entry.updatedAt.isValid() ? entry.updatedAt.toMSecsSinceEpoch() : 0,
            .maker = entry.maker,
            .isCut = entry.isCut};
}

RequestDetailsWindow::RequestDetailsWindow(const Clock &clock)
    : QWidget(nullptr, Qt::Window)
    , m_clock(clock)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    build();
    connect(&m_secondHand, &QTimer::timeout, this,
            [this] { m_expires->setWholeText(expiryText()); });
    resize(firstSize);
    recolour();
}

void RequestDetailsWindow::build()
{
    auto *column = new QVBoxLayout(this);
    m_form = new QFormLayout;
    m_form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    m_form->setVerticalSpacing(4);
    column->addLayout(m_form);
    for (ElidedLabel **label : {&m_id, &m_agent, &m_state, &m_created, &m_expires}) {
        *label = addRow(m_form);
    }
    m_warning = new QLabel(this);
    m_warning->setTextFormat(Qt::PlainText);
    m_warning->setWordWrap(true);
    column->addWidget(m_warning);
    m_command = new CommandTextView(this);
    column->addWidget(m_command, 1);
    m_hint = new QLabel(this);
    column->addWidget(m_hint);

    auto *buttons = new QHBoxLayout;
    column->addLayout(buttons);
    for (QPushButton **button : {&m_copyDetails, &m_copyId}) {
        *button = new QPushButton(this);
        buttons->addWidget(*button);
    }
    buttons->addStretch(1);
    buildDecisions(*buttons);
    m_close = new QPushButton(this);
    buttons->addWidget(m_close);
    connect(m_copyDetails, &QPushButton::clicked, this, [this] {
        copy(m_details.item.pretty() + (m_details.isCut ? u"\n("_s + cutNote() + u')' : QString()));
    });
    connect(m_copyId, &QPushButton::clicked, this, [this] { copy(m_details.item.approvalId); });
    connect(m_close, &QPushButton::clicked, this, &QWidget::close);
}

void RequestDetailsWindow::buildDecisions(QLayout &row)
{
    const auto add = [&](QPushButton *&button, ApprovalDecision decision) {
        button = new QPushButton(this);
        button->setAutoDefault(false);
        row.addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, decision] {
            Q_EMIT decisionChosen(ApprovalItem(m_details.item), decision);
        });
    };
    add(m_allowOnce, ApprovalDecision::AllowOnce);
    add(m_alwaysAllow, ApprovalDecision::AllowAlways);
    add(m_deny, ApprovalDecision::Deny);
    m_gate = new AllowGate(*m_command, {m_allowOnce, m_alwaysAllow}, *m_hint, this);
    connect(m_command, &CommandTextView::endSeen, this, [this] {
        if (m_details.state == ApprovalHistoryState::Pending && m_command->isEndSeen()) {
            Q_EMIT read(ApprovalItem(m_details.item));
        }
    });
}

ElidedLabel *RequestDetailsWindow::addRow(QFormLayout *form)
{
    auto *label = new ElidedLabel(this);
    form->addRow(new QLabel(this), label);
    return label;
}

void RequestDetailsWindow::open(const RequestDetails &details)
{
    m_details = details;
    layout()->activate(); // so that the command is laid out for the width it gets
    m_command->setCommand(details.item.command);
    const bool isPending = details.state == ApprovalHistoryState::Pending && !details.isCut;
    for (QPushButton *button : {m_allowOnce, m_alwaysAllow, m_deny}) {
        button->setVisible(isPending);
    }
    m_deny->setEnabled(isPending);
    if (isPending) {
        m_gate->begin();
    } else {
        m_gate->close();
    }
    relabel();
    m_command->setFocus();
    if (isMinimized()) {
        showNormal();
    } else {
        show();
    }
    raise();
    activateWindow();
}

void RequestDetailsWindow::setOver()
{
    m_gate->close();
    m_deny->setEnabled(false);
}

void RequestDetailsWindow::setAllowPartlyShown(const StoredSwitch &allowPartlyShown)
{
    m_gate->setAllowPartlyShown(allowPartlyShown);
}

void RequestDetailsWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        relabel();
    } else if (event->type() == QEvent::PaletteChange) {
        recolour();
    }
}

void RequestDetailsWindow::hideEvent(QHideEvent *event)
{
    m_secondHand.stop();
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        m_details = {};
        m_command->setCommand({});
    }
}

void RequestDetailsWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void RequestDetailsWindow::relabel()
{
    setWindowTitle(tr("Request details"));
    const ApprovalItem &item = m_details.item;
    const auto fill = [this](ElidedLabel *field, const QString &name, const QString &text) {
        static_cast<QLabel *>(m_form->labelForField(field))->setText(name);
        field->setWholeText(text);
        m_form->setRowVisible(field, !text.isEmpty());
    };
    const QString agent = item.agentId.value_or(QString());
    const bool isPending = m_details.state == ApprovalHistoryState::Pending;
    const QString changedAt
        = m_details.updatedAtMs > 0 ? u", "_s + timeText(m_details.updatedAtMs) : QString();
    const QString stateWord = historyStateWord(m_details.state, m_details.maker);
    fill(m_id, tr("ID:"), honestLine(item.approvalId).text);
    fill(m_agent, tr("Agent:"),
         !agent.isEmpty() ? honestLine(agent).text
             : isPending  ? tr("not named")
                          : QString());
    fill(m_state, tr("State:"), stateWord + changedAt);
    fill(m_created, tr("Created:"), item.createdAtMs > 0 ? timeText(item.createdAtMs) : QString());
    fill(m_expires, tr("Expires:"), expiryText());

    QStringList warnings;
    if (item.command.isEmpty()) {
        warnings.append(tr("The command of this request was not seen."));
    } else if (commandRiskLevel(item.command) == CommandRisk::High) {
        warnings.append(tr("HIGH RISK."));
    }
    if (m_details.isCut) {
        warnings.append(cutNote());
    }
    if (m_command->isSuspicious()) {
        warnings.append(tr("Characters that could mislead are shown as ⟨…⟩."));
    }
    warnings.append(askReasonWords(m_details.askReason));
    warnings.removeAll(QString());
    m_warning->setText(warnings.join(u' '));
    m_warning->setVisible(!warnings.isEmpty());
    m_copyDetails->setText(tr("Copy details"));
    m_copyId->setText(tr("Copy ID"));
    m_close->setText(tr("Close"));
    m_allowOnce->setText(tr("Allow Once"));
    m_alwaysAllow->setText(tr("Always Allow"));
    m_deny->setText(tr("Deny"));
    m_gate->retranslate();
}

QString RequestDetailsWindow::expiryText() const
{
    const ApprovalItem &item = m_details.item;
    if (item.expiresAtMs < 1) {
        return {};
    }
    const QString at = timeText(item.expiresAtMs);
    return m_details.state == ApprovalHistoryState::Pending
        ? at + u" ("_s + timeLeftWords(item, m_clock.nowMs()) + u')'
        : at;
}

void RequestDetailsWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_secondHand.start(std::chrono::seconds(1));
}

void RequestDetailsWindow::recolour()
{
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, warningColour(palette()));
    m_warning->setPalette(warning);
    QFont bold = font();
    bold.setBold(true);
    m_warning->setFont(bold);
}

} // namespace bram
