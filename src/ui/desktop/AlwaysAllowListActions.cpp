// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowListActions.h"

#include "ui/desktop/FlowLayout.h"

#include <QEvent>
#include <QPushButton>

namespace bram
{

AlwaysAllowListActions::AlwaysAllowListActions(QWidget *parent)
    : QGroupBox(parent)
{
    auto *layout = new FlowLayout(this);
    for (int i = 0; i < ActionCount; ++i) {
        auto *button = new QPushButton(this);
        m_buttons.at(static_cast<std::size_t>(i)) = button;
        layout->addWidget(button);
        connect(button, &QPushButton::clicked, this, [this, i] { Q_EMIT requested(Action(i)); });
    }
    retranslate();
}

void AlwaysAllowListActions::retranslate()
{
    setTitle(tr("Approval list actions"));
    m_buttons[Load]->setText(tr("Load approval list"));
    m_buttons[Register]->setText(tr("Register to always-allow list"));
    m_buttons[AddAll]->setText(tr("Add All approval list to app list"));
    m_buttons[Backup]->setText(tr("Backup approval list"));
    m_buttons[Restore]->setText(tr("Restore backed-up approval list"));
    m_buttons[Clear]->setText(tr("Select approval-list deletion"));
}

void AlwaysAllowListActions::changeEvent(QEvent *event)
{
    QGroupBox::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

} // namespace bram
