// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PendingPane.h"

#include "model/CommandRules.h"
#include "model/HonestDisplay.h"
#include "system/Clock.h"
#include "ui/desktop/AllowGate.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/WarningColours.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QEvent>
#include <QItemSelectionModel>
#include <QSplitter>

#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;

PendingPane::PendingPane(DesktopActions &actions, QWidget *parent)
    : QWidget(parent)
    , m_actions(actions)
    , m_title(new QLabel(this))
    , m_list(new QListView(this))
    , m_facts(new QLabel(this))
    , m_warning(new QLabel(this))
    , m_command(new CommandTextView(this))
    , m_hint(new QLabel(this))
    , m_allowOnce(new QPushButton(this))
    , m_alwaysAllow(new QPushButton(this))
    , m_deny(new QPushButton(this))
    , m_copyDetails(new QPushButton(this))
    , m_copyId(new QPushButton(this))
    , m_gate(new AllowGate(*m_command, {m_allowOnce, m_alwaysAllow}, *m_hint, this))
{
    build();
    m_gate->setAllowPartlyShown(actions.allowPartlyShown());
    connect(m_command, &CommandTextView::endSeen, this, [this] {
        if (m_shown && m_command->isEndSeen()) {
            m_actions.markRead(*m_shown);
        }
    });
    retranslate();
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &PendingPane::showSelected);
    // A selected request that ends takes its selection along without that signal.
    connect(&m_model, &QAbstractItemModel::layoutChanged, this, &PendingPane::showSelected);
    connect(&m_secondHand, &QTimer::timeout, this, &PendingPane::showFacts);
    connect(m_allowOnce, &QPushButton::clicked, this,
            [this] { decide(ApprovalDecision::AllowOnce); });
    connect(m_alwaysAllow, &QPushButton::clicked, this,
            [this] { decide(ApprovalDecision::AllowAlways); });
    connect(m_deny, &QPushButton::clicked, this, [this] { decide(ApprovalDecision::Deny); });
    connect(m_copyDetails, &QPushButton::clicked, this, [this] {
        if (const auto item = selected()) {
            m_actions.copyDetails(*item);
        }
    });
    connect(m_copyId, &QPushButton::clicked, this, [this] {
        if (const auto item = selected()) {
            m_actions.copyId(item->approvalId);
        }
    });
}

void PendingPane::build()
{
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_list->setModel(&m_model);
    m_list->setUniformItemSizes(true);
    m_list->setSpacing(2);
    m_list->setTextElideMode(Qt::ElideRight);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);

    auto *splitter = new QSplitter(Qt::Horizontal, this);
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(m_list);
    splitter->addWidget(makeDetails());
    splitter->setStretchFactor(0, 2);
    splitter->setStretchFactor(1, 3);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_title);
    layout->addWidget(splitter, 1);
}

QWidget *PendingPane::makeDetails()
{
    auto *details = new QWidget(this);
    m_facts->setTextFormat(Qt::PlainText);
    m_facts->setWordWrap(true);
    m_warning->setTextFormat(Qt::PlainText);
    m_warning->setWordWrap(true);
    recolour();
    auto *decisions = new QHBoxLayout;
    decisions->addWidget(m_copyDetails);
    decisions->addWidget(m_copyId);
    decisions->addStretch();
    decisions->addWidget(m_allowOnce);
    decisions->addWidget(m_alwaysAllow);
    decisions->addWidget(m_deny);
    auto *layout = new QVBoxLayout(details);
    layout->setContentsMargins({});
    layout->addWidget(m_facts);
    layout->addWidget(m_warning);
    layout->addWidget(m_command, 1);
    layout->addWidget(m_hint);
    layout->addLayout(decisions);
    return details;
}

void PendingPane::setItems(const QList<ApprovalItem> &items)
{
    m_model.setItems(items);
    m_title->setText(items.isEmpty() ? tr("No pending approvals")
                                     : tr("Pending approvals (%1)").arg(items.size()));
}

void PendingPane::retranslate()
{
    m_list->setAccessibleName(tr("Pending approvals"));
    m_allowOnce->setText(tr("Allow Once"));
    m_alwaysAllow->setText(tr("Always Allow"));
    m_deny->setText(tr("Deny"));
    m_copyDetails->setText(tr("Copy Details"));
    m_copyId->setText(tr("Copy ID"));
    m_gate->retranslate();
    setItems(QList<ApprovalItem>(m_model.items()));
    m_shown.reset();
    showSelected();
}

std::optional<ApprovalItem> PendingPane::selected() const
{
    const QModelIndexList rows = m_list->selectionModel()->selectedIndexes();
    return rows.isEmpty() ? std::nullopt
                          : std::optional(m_model.items().at(rows.constFirst().row()));
}

void PendingPane::showSelected()
{
    const auto item = selected();
    for (QPushButton *button : {m_deny, m_copyDetails, m_copyId}) {
        button->setEnabled(item.has_value());
    }
    if (item && m_shown && isSameQuestion(*item, *m_shown)) {
        m_shown = item;
        return; // another one came or went: the place where the reader is stays
    }
    m_shown = item;
    if (!item) {
        m_gate->close();
        m_facts->setText(m_model.items().isEmpty() ? tr("Requests for approval appear here.")
                                                   : tr("Select a request to read it whole."));
        m_command->setCommand({});
        m_warning->hide();
        return;
    }
    showFacts();
    m_command->setCommand(item->command);
    m_gate->begin();

    QStringList warnings;
    if (commandRiskLevel(item->command) == CommandRisk::High) {
        warnings += tr("HIGH RISK.");
    }
    if (m_command->isSuspicious()) {
        warnings += tr("Characters that could mislead are shown as ⟨…⟩.");
    }
    m_warning->setText(warnings.join(u' '));
    m_warning->setVisible(!warnings.isEmpty());
}

void PendingPane::showFacts()
{
    if (!m_shown) {
        return;
    }
    QStringList facts {tr("ID: %1").arg(honestLine(m_shown->approvalId).text)};
    if (m_shown->agentId && !m_shown->agentId->isEmpty()) {
        facts += tr("Agent: %1").arg(honestLine(*m_shown->agentId).text);
    }
    facts += timeLeftWords(*m_shown, m_actions.clock().nowMs());
    facts.removeAll(QString());
    m_facts->setText(facts.join(u" · "_s));
}

void PendingPane::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    showFacts();
    m_secondHand.start(std::chrono::seconds(1));
}

void PendingPane::hideEvent(QHideEvent *event)
{
    m_secondHand.stop();
    QWidget::hideEvent(event);
}

void PendingPane::recolour()
{
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, warningColour(palette()));
    m_warning->setPalette(warning);
    QFont bold = font();
    bold.setBold(true);
    m_warning->setFont(bold);
}

void PendingPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        recolour();
    }
}

void PendingPane::decide(ApprovalDecision decision)
{
    if (const auto item = selected()) {
        m_actions.decide(*item, decision);
    }
}

} // namespace bram
