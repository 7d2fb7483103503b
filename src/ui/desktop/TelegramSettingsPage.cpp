// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/TelegramSettingsPage.h"

#include "config/SharedPollingSetting.h"

namespace bram
{

TelegramSettingsPage::TelegramSettingsPage(SharedPollingSetting &sharedPolling)
    : m_sharedPolling(sharedPolling)
    , m_allow(new QCheckBox(this))
{
    addRow(m_allow);
    m_problem = addNote();
    m_meaning = addNote();
    setNote(m_problem, {});
    connect(m_allow, &QCheckBox::clicked, this, [this](bool isAllowed) {
        const bool isKept = m_sharedPolling.setAllowSharedBotPollingOverride(isAllowed);
        setNote(m_problem,
                isKept ? QString()
                       : tr("This could not be remembered; it lasts until the program ends."));
    });
    connect(&sharedPolling, &SharedPollingSetting::allowSharedBotPollingOverrideChanged, m_allow,
            &QCheckBox::setChecked);
    retranslate();
}

QString TelegramSettingsPage::title() const
{
    return tr("&Telegram");
}

void TelegramSettingsPage::refresh()
{
    m_allow->setChecked(m_sharedPolling.allowSharedBotPollingOverride());
}

void TelegramSettingsPage::retranslate()
{
    setRowLabel(m_allow, tr("Shared polling:"));
    m_allow->setText(tr("Fetch the messages of a bot that the &platform uses too"));
    setNote(
        m_meaning,
        tr("Two programs that fetch the messages of one bot take them from each other. So while "
           "this is off, BRAM only sends to the chats of a bot that the platform's own channel "
           "fetches from, and takes no decisions there."));
    refresh();
}

} // namespace bram
