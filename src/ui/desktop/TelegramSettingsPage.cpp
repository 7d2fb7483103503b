// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/TelegramSettingsPage.h"

#include "config/SharedPollingSetting.h"
#include "model/HonestDisplay.h"
#include "monitor/TelegramBridgeSupervisor.h"
#include "monitor/TelegramTokens.h"
#include "system/BackgroundTasks.h"
#include "ui/language/TelegramWords.h"

#include <QBoxLayout>
#include <QFormLayout>

namespace bram
{

using namespace Qt::StringLiterals;

TelegramSettingsPage::TelegramSettingsPage(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_mode(new QLabel(this))
    , m_source(new QLabel(this))
    , m_token(new QLineEdit(this))
    , m_store(new QPushButton(this))
    , m_remove(new QPushButton(this))
    , m_useEnvironment(new QPushButton(this))
    , m_reload(new QPushButton(this))
    , m_allow(new QCheckBox(this))
{
    buildStatus();
    buildToken();
    buildSharedPolling();
    connect(&collaborators.telegram, &TelegramBridgeSupervisor::statusChanged, this,
            &TelegramSettingsPage::showStatus);
    retranslate();
}

void TelegramSettingsPage::buildStatus()
{
    for (QLabel *label : {m_mode, m_source}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        QSizePolicy policy(QSizePolicy::MinimumExpanding, QSizePolicy::Minimum);
        policy.setHeightForWidth(true);
        label->setSizePolicy(policy);
        addRow(label);
    }
    m_hints = addNote();
}

void TelegramSettingsPage::buildToken()
{
    m_token->setEchoMode(QLineEdit::Password);
    m_token->setInputMethodHints(Qt::ImhSensitiveData | Qt::ImhNoPredictiveText);
    m_token->setContextMenuPolicy(Qt::NoContextMenu);
    addRow(m_token);
    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    for (QPushButton *button : {m_store, m_remove, m_useEnvironment, m_reload}) {
        button->setAutoDefault(false);
        buttons->addWidget(button);
    }
    buttons->addStretch();
    form()->addRow(QString(), buttons);
    m_tokenOutcome = addNote();
    m_tokenMeaning = addNote();
    setNote(m_tokenOutcome, {});
    connect(m_token, &QLineEdit::textChanged, m_store,
            [this](const QString &text) { m_store->setEnabled(!text.trimmed().isEmpty()); });
    connect(m_token, &QLineEdit::returnPressed, this, &TelegramSettingsPage::storeToken);
    connect(m_store, &QPushButton::clicked, this, &TelegramSettingsPage::storeToken);
    connect(m_remove, &QPushButton::clicked, this, &TelegramSettingsPage::removeToken);
    connect(m_useEnvironment, &QPushButton::clicked, this, [this] {
        showOutcome(m_collaborators.telegram.tokens().useEnvironment(),
                    tr("The environment's bot token is used."));
    });
    connect(m_reload, &QPushButton::clicked, this,
            [this] { m_collaborators.telegram.configureTelegramBridge(); });
    m_store->setEnabled(false);
}

void TelegramSettingsPage::buildSharedPolling()
{
    addRow(m_allow);
    m_problem = addNote();
    m_meaning = addNote();
    setNote(m_problem, {});
    SharedPollingSetting &setting = m_collaborators.sharedPolling;
    connect(m_allow, &QCheckBox::clicked, this, [this, &setting](bool isAllowed) {
        const bool isKept = setting.setAllowSharedBotPollingOverride(isAllowed);
        setNote(m_problem,
                isKept ? QString()
                       : tr("This could not be remembered; it lasts until the program ends."));
    });
    connect(&setting, &SharedPollingSetting::allowSharedBotPollingOverrideChanged, m_allow,
            &QCheckBox::setChecked);
}

QString TelegramSettingsPage::title() const
{
    return tr("&Telegram");
}

void TelegramSettingsPage::refresh()
{
    m_allow->setChecked(m_collaborators.sharedPolling.allowSharedBotPollingOverride());
    showStatus();
}

void TelegramSettingsPage::showStatus()
{
    const TelegramStatus &status = m_collaborators.telegram.status();
    m_mode->setText(telegramModeWords(status));
    m_source->setText(telegramTokenSourceWords(status));
    setNote(m_hints, (telegramRuleWords(status) + telegramHints(status)).join(u"\n"_s));
    m_useEnvironment->setVisible(status.isEnvironmentSetAside);
}

void TelegramSettingsPage::retranslate()
{
    setRowLabel(m_mode, tr("Bridge:"));
    setRowLabel(m_source, tr("Bot token in use:"));
    setRowLabel(m_token, tr("&New bot token:"));
    m_token->setPlaceholderText(tr("123456789:…"));
    m_store->setText(tr("St&ore"));
    m_remove->setText(tr("&Remove"));
    m_useEnvironment->setText(tr("Use the &Environment's"));
    m_reload->setText(tr("Set &Up Again"));
    setNote(m_tokenMeaning,
            tr("The token goes into the keyring of the desktop and is used at once. It is not "
               "shown again. Remove takes it out of the keyring."));
    setRowLabel(m_allow, tr("Shared polling:"));
    m_allow->setText(tr("Fetch the messages of a bot that the &platform uses too"));
    setNote(
        m_meaning,
        tr("Two programs that fetch the messages of one bot take them from each other. So while "
           "this is off, BRAM only sends to the chats of a bot that the platform's own channel "
           "fetches from, and takes no decisions there."));
    refresh();
}

void TelegramSettingsPage::storeToken()
{
    const QString token = m_token->text().trimmed();
    m_token->clear(); // also when it is refused: it shall not stay on the screen
    if (!token.isEmpty()) {
        m_collaborators.tasks.spawn(store(this, token), u"telegram token"_s);
    }
}

void TelegramSettingsPage::removeToken()
{
    m_collaborators.tasks.spawn(remove(this), u"telegram token"_s);
}

QCoro::Task<> TelegramSettingsPage::store(QPointer<TelegramSettingsPage> self, QString token)
{
    const auto stored
        = co_await TelegramTokens::store(&self->m_collaborators.telegram.tokens(), token);
    if (self) {
        self->showOutcome(stored, tr("The bot token is in the keyring and in use."));
    }
}

QCoro::Task<> TelegramSettingsPage::remove(QPointer<TelegramSettingsPage> self)
{
    const auto removed = co_await TelegramTokens::clear(&self->m_collaborators.telegram.tokens());
    if (self) {
        self->showOutcome(removed, tr("The keyring holds no bot token any more."));
    }
}

void TelegramSettingsPage::showOutcome(const std::expected<void, Error> &outcome,
                                       const QString &done)
{
    setNote(m_tokenOutcome, outcome ? done : honestLine(outcome.error().message).text);
}

} // namespace bram
