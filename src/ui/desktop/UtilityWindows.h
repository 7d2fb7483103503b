// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/FileSettingsPage.h"

#include <functional>
#include <memory>

namespace bram
{

class AboutWindow;
class AgentSelection;
class ApprovalNotifications;
class DesktopActions;
class LanguageChoice;
class LoginStart;
class NotificationService;
class PracticeChatWindow;
class SettingsWindow;
class SharedPollingSetting;
class StoredSwitch;
class TelegramBridgeSupervisor;

/// What the settings window sets and shows beside what the coordinator has.
struct SettingsParts {
    StoredSwitch &allowPartlyShown;
    StoredSwitch &unencryptedGateway;
    SharedPollingSetting &sharedPolling;
    TelegramBridgeSupervisor &telegram;
    LoginStart *loginStart; ///< null where the program leaves the desktop's settings alone
    FileOpener &opener;
    std::function<QList<FilePlace>()> places;
};

/// The windows beside those about requests. Each is made when it is first wanted. Main thread.
class UtilityWindows
{
public:
    struct Collaborators {
        DesktopActions &actions;
        AgentSelection &agents;
        LanguageChoice &language;
        BackgroundTasks &tasks;
        NotificationService &notificationService;
        const ApprovalNotifications &notifications;
        SettingsParts settings;
    };

    explicit UtilityWindows(const Collaborators &collaborators);
    ~UtilityWindows();

    void showSettings();
    void showAbout();
    /// Only in practice.
    void showPracticeChat();

private:
    std::unique_ptr<SettingsWindow> makeSettings() const;

    Collaborators m_collaborators;
    std::unique_ptr<SettingsWindow> m_settings;
    std::unique_ptr<AboutWindow> m_about;
    std::unique_ptr<PracticeChatWindow> m_practiceChat;
};

} // namespace bram
