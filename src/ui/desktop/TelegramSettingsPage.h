// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"
#include "ui/desktop/SettingsPage.h"

#include <QCheckBox>
#include <QCoro/QCoroTask>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>

#include <expected>

namespace bram
{

class BackgroundTasks;
class SharedPollingSetting;
class TelegramBridgeSupervisor;

/// How decisions by chat work: the bot's token, which goes in here and is never shown again, what the bridge
/// does, and shared polling.
class TelegramSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    struct Collaborators {
        SharedPollingSetting &sharedPolling;
        TelegramBridgeSupervisor &telegram;
        BackgroundTasks &tasks;
    };

    explicit TelegramSettingsPage(const Collaborators &collaborators);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;

private:
    void buildStatus();
    void buildToken();
    void buildSharedPolling();
    void showStatus();
    void storeToken();
    void removeToken();
    static QCoro::Task<> store(QPointer<TelegramSettingsPage> self, QString token);
    static QCoro::Task<> remove(QPointer<TelegramSettingsPage> self);
    /// `done` is said when it went well.
    void showOutcome(const std::expected<void, Error> &outcome, const QString &done);

    Collaborators m_collaborators;
    QLabel *m_mode;
    QLabel *m_source;
    QLabel *m_hints;
    QLineEdit *m_token;
    QPushButton *m_store;
    QPushButton *m_remove;
    QPushButton *m_useEnvironment;
    QPushButton *m_reload;
    QLabel *m_tokenOutcome;
    QLabel *m_tokenMeaning;
    QCheckBox *m_allow;
    QLabel *m_problem;
    QLabel *m_meaning;
};

} // namespace bram
