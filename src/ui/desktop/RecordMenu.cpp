// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/RecordMenu.h"

#include "ui/desktop/RecordActions.h"

namespace bram
{

RecordMenu::RecordMenu(RecordActions &actions)
    : m_actions(actions)
{
    m_menu.addActions({&m_save, &m_view, &m_bundle, &m_cancel});
    connect(&m_save, &QAction::triggered, &m_actions, &RecordActions::exportWeeklyAuditReport);
    connect(&m_view, &QAction::triggered, &m_actions, &RecordActions::previewWeeklyAuditReport);
    connect(&m_bundle, &QAction::triggered, &m_actions, &RecordActions::exportDiagnosticsBundle);
    connect(&m_cancel, &QAction::triggered, &m_actions, &RecordActions::cancel);
    connect(&m_actions, &RecordActions::workChanged, this, &RecordMenu::showWork);
    retranslate();
}

void RecordMenu::retranslate()
{
    m_save.setText(tr("Save last 7 days audit data"));
    m_view.setText(tr("View last 7 days audit data"));
    m_bundle.setText(tr("Export diagnostics bundle"));
    m_cancel.setText(tr("Cancel Report or Bundle"));
    showWork();
}

void RecordMenu::showWork()
{
    const bool isWorking = m_actions.isWorking();
    m_menu.setTitle(isWorking ? tr("Audit/Diagnostics (%1 %)").arg(m_actions.percentDone())
                              : tr("Audit/Diagnostics"));
    for (QAction *action : {&m_save, &m_view, &m_bundle}) {
        action->setEnabled(!isWorking);
    }
    m_cancel.setEnabled(isWorking);
}

} // namespace bram
