// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/TrialNotification.h"
#include "ui/desktop/SettingsPage.h"

#include <QCheckBox>
#include <QPushButton>

namespace bram
{

class ApprovalNotifications;
class ChoiceBox;
class LanguageChoice;
class LoginStart;

/// The language, the start at login, and whether notifications are shown.
class GeneralSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    struct Collaborators {
        LanguageChoice &language;
        LoginStart *loginStart; ///< null where the program leaves the desktop's settings alone
        NotificationService &notificationService;
        const ApprovalNotifications &notifications;
    };

    explicit GeneralSettingsPage(const Collaborators &collaborators);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;
    void hideEvent(QHideEvent *event) override;

private:
    void buildNotifications();
    void chooseLanguage(const QVariant &value);
    void startAtLogin(bool isWanted);
    void showLoginStart();
    void showNotifications();

    Collaborators m_collaborators;
    TrialNotification m_trial;
    ChoiceBox *m_languages;
    QLabel *m_languageNote;
    QCheckBox *m_loginStart;
    QLabel *m_loginStartNote;
    QString m_loginStartProblem; ///< of the last change
    QLabel *m_notificationTitle;
    QWidget *m_notifications; ///< whether the desktop shows them
    QLabel *m_notificationDot;
    QLabel *m_notificationLine;
    QPushButton *m_sendTrial;
    QLabel *m_trialNote;
};

} // namespace bram
