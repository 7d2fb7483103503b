// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RecordPane.h"

#include "ui/desktop/FlowLayout.h"
#include "ui/desktop/RecordActions.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>

#include <chrono>

namespace bram
{

using namespace std::chrono_literals;

namespace
{
constexpr auto showingAfter = 250ms;
constexpr int wholePercent = 100;
} // namespace

RecordPane::RecordPane(RecordActions &actions, QWidget *parent)
    : QGroupBox(parent)
    , m_actions(actions)
    , m_saveReport(new QPushButton(this))
    , m_viewReport(new QPushButton(this))
    , m_exportBundle(new QPushButton(this))
    , m_progressArea(new QWidget(this))
    , m_progressText(new QLabel(m_progressArea))
    , m_progress(new QProgressBar(m_progressArea))
    , m_cancel(new QPushButton(m_progressArea))
{
    auto *buttons = new FlowLayout;
    for (QPushButton *button : {m_saveReport, m_viewReport, m_exportBundle}) {
        buttons->addWidget(button);
    }
    auto *row = new QHBoxLayout(m_progressArea);
    row->setContentsMargins({});
    row->addWidget(m_progressText);
    row->addWidget(m_progress, 1);
    row->addWidget(m_cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(buttons);
    layout->addWidget(m_progressArea);
    m_progress->setRange(0, wholePercent);
    m_progressArea->hide();

    m_showing.setSingleShot(true);
    m_showing.setInterval(showingAfter);
    connect(&m_showing, &QTimer::timeout, m_progressArea, &QWidget::show);
    connect(m_saveReport, &QPushButton::clicked, &actions, &RecordActions::exportWeeklyAuditReport);
    connect(m_viewReport, &QPushButton::clicked, &actions,
            &RecordActions::previewWeeklyAuditReport);
    connect(m_exportBundle, &QPushButton::clicked, &actions,
            &RecordActions::exportDiagnosticsBundle);
    connect(m_cancel, &QPushButton::clicked, &actions, &RecordActions::cancel);
    connect(&actions, &RecordActions::workChanged, this, &RecordPane::showWork);
    retranslate();
    showWork();
}

void RecordPane::showWork()
{
    m_progress->setValue(m_actions.percentDone());
    if (!m_actions.isWorking()) {
        m_showing.stop();
        m_progressArea->hide();
    } else if (m_progressArea->isHidden() && !m_showing.isActive()) {
        m_showing.start();
    }
}

void RecordPane::retranslate()
{
    setTitle(tr("Audit/Diagnostics"));
    m_saveReport->setText(tr("Save last 7 days audit data"));
    m_viewReport->setText(tr("View last 7 days audit data"));
    m_exportBundle->setText(tr("Export diagnostics bundle"));
    m_progressText->setText(tr("Going through the audit log:"));
    m_progress->setAccessibleName(tr("Going through the audit log"));
    m_cancel->setText(tr("Cancel"));
}

void RecordPane::changeEvent(QEvent *event)
{
    QGroupBox::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

} // namespace bram
