// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/UtilityWindows.h"

#include "ui/desktop/AboutWindow.h"
#include "ui/desktop/AgentSettingsPage.h"
#include "ui/desktop/BringToFront.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/GeneralSettingsPage.h"
#include "ui/desktop/PracticeChatWindow.h"
#include "ui/desktop/RequestSettingsPage.h"
#include "ui/desktop/SettingsWindow.h"
#include "ui/desktop/TelegramSettingsPage.h"

namespace bram
{

UtilityWindows::UtilityWindows(const Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

UtilityWindows::~UtilityWindows() = default;

void UtilityWindows::showSettings()
{
    if (!m_settings) {
        m_settings = makeSettings();
    }
    bringToFront(*m_settings);
}

void UtilityWindows::showAbout()
{
    if (!m_about) {
        m_about = std::make_unique<AboutWindow>();
    }
    bringToFront(*m_about);
}

void UtilityWindows::showPracticeChat()
{
    if (!m_practiceChat) {
        m_practiceChat
            = std::make_unique<PracticeChatWindow>(*m_collaborators.actions.practiceChat());
    }
    bringToFront(*m_practiceChat);
}

std::unique_ptr<SettingsWindow> UtilityWindows::makeSettings() const
{
    const SettingsParts &parts = m_collaborators.settings;
    auto window = std::make_unique<SettingsWindow>();
    window->addPage(std::make_unique<GeneralSettingsPage>(GeneralSettingsPage::Collaborators {
        .language = m_collaborators.language,
        .loginStart = parts.loginStart,
        .notificationService = m_collaborators.notificationService,
        .notifications = m_collaborators.notifications,
    }));
    window->addPage(
        std::make_unique<AgentSettingsPage>(m_collaborators.actions, m_collaborators.agents));
    window->addPage(
        std::make_unique<RequestSettingsPage>(parts.allowPartlyShown, parts.unencryptedGateway));
    window->addPage(std::make_unique<TelegramSettingsPage>(
        TelegramSettingsPage::Collaborators {.sharedPolling = parts.sharedPolling,
                                             .telegram = parts.telegram,
                                             .tasks = m_collaborators.tasks}));
    window->addPage(std::make_unique<FileSettingsPage>(FileSettingsPage::Collaborators {
        .places = parts.places,
        .opener = parts.opener,
        .tasks = m_collaborators.tasks,
    }));
    return window;
}

} // namespace bram
