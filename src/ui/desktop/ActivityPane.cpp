// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ActivityPane.h"

#include "monitor/ApprovalBoard.h"
#include "ui/desktop/Chip.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QEvent>
#include <QHeaderView>

#include <algorithm>
#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto pauseBetweenRefreshes = 100ms;
constexpr int cellPadding = 16;
} // namespace

ActivityPane::ActivityPane(const ApprovalBoard &board, QWidget *parent)
    : QWidget(parent)
    , m_board(board)
    , m_title(new QLabel(this))
    , m_table(new QTableView(this))
    , m_empty(new QLabel(this))
    , m_stack(new QStackedLayout)
{
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_title->setBuddy(m_table);
    m_empty->setAlignment(Qt::AlignCenter);
    m_empty->setWordWrap(true);
    m_table->setModel(&m_model);
    m_table->setItemDelegateForColumn(ActivityModel::Actor, new ChipDelegate(m_table));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setShowGrid(false);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setMinimumSectionSize(cellPadding);
    header->setStretchLastSection(true);
    m_stack->addWidget(m_table);
    m_stack->addWidget(m_empty);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_title);
    layout->addLayout(m_stack, 1);

    m_pause.setSingleShot(true);
    m_pause.setInterval(pauseBetweenRefreshes);
    connect(&m_pause, &QTimer::timeout, this, &ActivityPane::refresh);
    connect(&board, &ApprovalBoard::activityChanged, this, [this] {
        if (!m_pause.isActive()) {
            m_pause.start();
        }
    });
    retranslate();
    refresh();
}

void ActivityPane::refresh()
{
    m_model.setEntries(m_board.activity());
    m_stack->setCurrentWidget(m_board.activity().isEmpty() ? static_cast<QWidget *>(m_empty)
                                                           : m_table);
}

void ActivityPane::retranslate()
{
    m_title->setText(tr("Recent activity"));
    m_table->setAccessibleName(tr("Recent activity"));
    m_empty->setText(tr("No activity yet."));
    m_model.retranslate();
    fitColumns();
}

void ActivityPane::fitColumns()
{
    const QFontMetrics metrics = m_table->fontMetrics();
    const auto chip = chipSize(activityActorWord(ActivityActor::AppAndBrackwen), m_table->font());
    int action = 0;
    for (int i = 0; i <= static_cast<int>(ActivityAction::ReloadGatewayToken); ++i) {
        action = std::max(action, metrics.horizontalAdvance(activityActionWord(ActivityAction(i))));
    }
    m_table->setColumnWidth(ActivityModel::Time,
                            metrics.horizontalAdvance(u"00:00:00"_s) + cellPadding);
    m_table->setColumnWidth(ActivityModel::Actor, chip.width() + cellPadding);
    m_table->setColumnWidth(ActivityModel::Action, action + cellPadding);
    m_table->verticalHeader()->setDefaultSectionSize(chip.height() + cellPadding / 3);
}

void ActivityPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    } else if (event->type() == QEvent::FontChange) {
        fitColumns();
    }
}

} // namespace bram
