// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusWindow.h"

#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/PendingPane.h"
#include "ui/desktop/StatusDot.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHeaderView>
#include <QSplitter>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QSize usualSize(760, 560);
constexpr QSize smallestSize(560, 400);
constexpr int dotSide = 16;
constexpr int cellPadding = 24;

QLabel *makeTitle(QWidget *parent)
{
    auto *title = new QLabel(parent);
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    return title;
}
} // namespace

StatusWindow::StatusWindow(DesktopActions &actions, const LanguageChoice &language,
                           SimulationEntry simulationEntry)
    : m_actions(actions)
    , m_menu(actions, language, MenuDrawing::OwnWindow, simulationEntry)
    , m_notice(new QLabel(this))
    , m_reconnect(new QPushButton(this))
    , m_reload(new QPushButton(this))
    , m_pending(new PendingPane(actions, this))
    , m_historyTitle(makeTitle(this))
    , m_history(new QTableView(this))
    , m_clearHistory(new QPushButton(this))
    , m_menuButton(new QPushButton(this))
    , m_hide(new QPushButton(this))
{
    build();
    retranslate();
    setRole(Role::Optional);
    connect(m_reconnect, &QPushButton::clicked, &m_actions, &DesktopActions::reconnectGateway);
    connect(m_reload, &QPushButton::clicked, &m_actions, &DesktopActions::reloadGatewayToken);
    connect(m_clearHistory, &QPushButton::clicked, &m_actions, &DesktopActions::clearHistory);
    connect(m_hide, &QPushButton::clicked, this, &StatusWindow::leave);
    connect(m_history, &QTableView::activated, this, [this](const QModelIndex &index) {
        Q_EMIT m_actions.detailsRequested(m_historyModel.entries().at(index.row()).approvalId);
    });
}

StatusWindow::~StatusWindow() = default;

void StatusWindow::build()
{
    m_notice->setWordWrap(true);
    m_menuButton->setMenu(&m_menu.menu());

    auto *lists = new QSplitter(Qt::Vertical, this);
    lists->setChildrenCollapsible(false);
    lists->addWidget(m_pending);
    lists->addWidget(makeHistory());
    lists->setStretchFactor(0, 3);
    lists->setStretchFactor(1, 2);
    lists->setHandleWidth(10);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_menuButton);
    buttons->addStretch();
    buttons->addWidget(m_hide);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_notice);
    layout->addLayout(makeStatusArea());
    layout->addWidget(lists, 1);
    layout->addLayout(buttons);
    setMinimumSize(smallestSize);
    resize(usualSize);
}

QLayout *StatusWindow::makeStatusArea()
{
    auto *rows = new QGridLayout;
    rows->setColumnStretch(1, 1);
    for (int i = 0; i < StatusMenu::statusRowCount; ++i) {
        const StatusRow row {new QLabel(this), new QLabel(this)};
        row.text->setTextFormat(Qt::PlainText);
        row.text->setWordWrap(true);
        row.text->setTextInteractionFlags(Qt::TextSelectableByMouse);
        rows->addWidget(row.dot, i, 0, Qt::AlignTop);
        rows->addWidget(row.text, i, 1);
        m_statusRows.push_back(row);
    }
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_reconnect);
    buttons->addWidget(m_reload);
    buttons->addStretch();
    auto *area = new QHBoxLayout;
    area->addLayout(rows, 1);
    area->addLayout(buttons);
    return area;
}

QWidget *StatusWindow::makeHistory()
{
    m_history->setModel(&m_historyModel);
    m_history->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_history->setSelectionMode(QAbstractItemView::SingleSelection);
    m_history->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_history->setShowGrid(false);
    m_history->setWordWrap(false);
    m_history->setTabKeyNavigation(false);
    m_history->verticalHeader()->hide();
    m_history->verticalHeader()->setDefaultSectionSize(m_history->fontMetrics().height() + 6);
    QHeaderView *header = m_history->horizontalHeader();
    header->setStretchLastSection(true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setHighlightSections(false);

    auto *top = new QHBoxLayout;
    top->addWidget(m_historyTitle);
    top->addStretch();
    top->addWidget(m_clearHistory);
    auto *pane = new QWidget(this);
    auto *layout = new QVBoxLayout(pane);
    layout->setContentsMargins({});
    layout->addLayout(top);
    layout->addWidget(m_history, 1);
    return pane;
}

void StatusWindow::setRole(Role role)
{
    m_role = role;
    m_notice->setVisible(role == Role::OnlySurface);
    m_hide->setText(role == Role::OnlySurface ? tr("Minimise") : tr("Hide"));
}

void StatusWindow::update(const StatusMenuContent &content)
{
    m_content = content;
    m_menu.update(content);
    showStatus();
    m_pending->setItems(content.pending);
    m_historyModel.setEntries(content.history);
    m_clearHistory->setEnabled(!content.history.isEmpty());
}

void StatusWindow::showStatus()
{
    for (std::size_t i = 0; i < m_statusRows.size(); ++i) {
        const auto index = static_cast<qsizetype>(i);
        const bool isUsed = index < m_content.status.size();
        const StatusRow &row = m_statusRows.at(i);
        row.dot->setVisible(isUsed);
        row.text->setVisible(isUsed);
        if (isUsed) {
            const StatusLine &line = m_content.status.at(index);
            row.dot->setPixmap(
                statusDot(line.indicator).pixmap(QSize(dotSide, dotSide), devicePixelRatioF()));
            row.dot->setAccessibleName(indicatorWord(line.indicator));
            row.text->setText(line.text);
        }
    }
}

void StatusWindow::retranslate()
{
    setWindowTitle(u"BRAM"_s);
    m_notice->setText(tr("This desktop shows no tray icons, so the requests are listed here. The "
                         "icon appears by itself once there is a tray."));
    m_reconnect->setText(tr("Reconnect Gateway"));
    m_reload->setText(tr("Reload Gateway Token"));
    m_historyTitle->setText(tr("History"));
    m_history->setAccessibleName(tr("History"));
    m_clearHistory->setText(tr("Clear History"));
    m_menuButton->setText(tr("Menu"));
    setRole(m_role);
    m_pending->retranslate();
    m_historyModel.retranslate();
    m_menu.retranslate();
    fitHistoryColumns();
}

void StatusWindow::fitHistoryColumns()
{
    const QFontMetrics metrics = m_history->fontMetrics();
    int widest = 0;
    for (const ApprovalHistoryState state :
         {ApprovalHistoryState::Pending, ApprovalHistoryState::AllowOnce,
          ApprovalHistoryState::AllowAlways, ApprovalHistoryState::Deny,
          ApprovalHistoryState::Canceled, ApprovalHistoryState::Resolved}) {
        for (const auto maker : {DecisionMaker::Person, DecisionMaker::AlwaysAllowList}) {
            widest = std::max(widest, metrics.horizontalAdvance(historyStateWord(state, maker)));
        }
    }
    m_history->setColumnWidth(HistoryModel::State, widest + cellPadding);
    m_history->setColumnWidth(HistoryModel::Time,
                              metrics.horizontalAdvance(u"00-00 00:00:00"_s) + cellPadding);
}

void StatusWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

/// Hidden it is not kept up to date, and must not keep what may have megabytes. It is filled before it is shown.
void StatusWindow::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (!event->spontaneous()) {
        StatusMenuContent content = m_content;
        content.pending.clear();
        update(content);
    }
}

void StatusWindow::closeEvent(QCloseEvent *event)
{
    // Only what the operator does: the program's own end and the return of the tray do close it.
    if (m_role == Role::OnlySurface && event->spontaneous()) {
        event->ignore();
        leave();
        return;
    }
    QWidget::closeEvent(event);
}

void StatusWindow::leave()
{
    if (m_role == Role::OnlySurface) {
        showMinimized();
    } else {
        hide();
    }
}

} // namespace bram
