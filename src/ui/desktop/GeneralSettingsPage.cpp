// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/GeneralSettingsPage.h"

#include "model/HonestDisplay.h"
#include "monitor/ApprovalNotifications.h"
#include "system/LoginStart.h"
#include "ui/desktop/ChoiceBox.h"
#include "ui/desktop/StatusDot.h"
#include "ui/language/LanguageChoice.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QFormLayout>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int dotSide = 16;
} // namespace

GeneralSettingsPage::GeneralSettingsPage(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_trial(collaborators.notificationService)
    , m_languages(new ChoiceBox(this))
    , m_loginStart(new QCheckBox(this))
    , m_notificationTitle(new QLabel(this))
    , m_notifications(new QWidget(this))
    , m_notificationDot(new QLabel(m_notifications))
    , m_notificationLine(new QLabel(m_notifications))
    , m_sendTrial(new QPushButton(this))
{
    // Each in its own language, so that who does not read the present one finds the way back.
    m_languages->addItem(u"English"_s, rawText(MenuLanguage::English));
    m_languages->addItem(u"한국어"_s, rawText(MenuLanguage::Korean));
    addRow(m_languages);
    m_languageNote = addNote();
    setNote(m_languageNote, {});
    addRow(m_loginStart);
    m_loginStartNote = addNote();
    buildNotifications();

    connect(m_languages, &ChoiceBox::chosen, this, &GeneralSettingsPage::chooseLanguage);
    connect(m_loginStart, &QCheckBox::clicked, this, &GeneralSettingsPage::startAtLogin);
    connect(m_sendTrial, &QPushButton::clicked, &m_trial, &TrialNotification::send);
    connect(&m_trial, &TrialNotification::outcomeChanged, this,
            &GeneralSettingsPage::showNotifications);
    connect(&collaborators.notifications, &ApprovalNotifications::statusLinesChanged, this,
            &GeneralSettingsPage::showNotifications);
    retranslate();
}

void GeneralSettingsPage::buildNotifications()
{
    m_notificationLine->setTextFormat(Qt::PlainText);
    m_notificationLine->setWordWrap(true);
    m_notificationLine->setAlignment(Qt::AlignTop);
    m_notificationLine->setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto *line = new QHBoxLayout(m_notifications);
    line->setContentsMargins({});
    line->addWidget(m_notificationDot, 0, Qt::AlignTop);
    line->addWidget(m_notificationLine, 1);
    m_sendTrial->setAutoDefault(false);
    auto *button = new QHBoxLayout;
    button->addWidget(m_sendTrial);
    button->addStretch();
    form()->addRow(m_notificationTitle, button);
    form()->addRow(QString(), m_notifications);
    m_trialNote = addNote();
}

QString GeneralSettingsPage::title() const
{
    return tr("&General");
}

void GeneralSettingsPage::refresh()
{
    m_languages->setChosen(rawText(m_collaborators.language.current()));
    showLoginStart();
    showNotifications();
}

void GeneralSettingsPage::retranslate()
{
    setRowLabel(m_languages, tr("&Language (언어):"));
    setRowLabel(m_loginStart, tr("At login:"));
    m_notificationTitle->setText(tr("Notifications:"));
    m_loginStart->setText(tr("&Start BRAM when I log in"));
    m_sendTrial->setText(tr("Send a Test &Notification"));
    m_languages->setAccessibleName(tr("Language"));
    refresh();
}

void GeneralSettingsPage::hideEvent(QHideEvent *event)
{
    m_trial.withdraw();
    SettingsPage::hideEvent(event);
}

void GeneralSettingsPage::chooseLanguage(const QVariant &value)
{
    const auto language = menuLanguageFromRawText(value.toString());
    if (!language) {
        return;
    }
    const bool isKept = m_collaborators.language.choose(*language);
    setNote(m_languageNote,
            isKept ? QString()
                   : tr("This could not be remembered; it lasts until the program ends."));
    refresh();
}

void GeneralSettingsPage::startAtLogin(bool isWanted)
{
    const auto changed = m_collaborators.loginStart->setOn(isWanted);
    m_loginStartProblem = changed ? QString() : honestLine(changed.error().message).text;
    showLoginStart();
}

void GeneralSettingsPage::showLoginStart()
{
    m_loginStart->setEnabled(m_collaborators.loginStart != nullptr);
    if (m_collaborators.loginStart == nullptr) {
        setNote(m_loginStartNote, tr("Practice mode leaves your desktop's settings alone."));
        return;
    }
    const LoginStart::State state = m_collaborators.loginStart->state();
    m_loginStart->setChecked(state.isOn);
    QString note;
    if (!m_loginStartProblem.isEmpty()) {
        note = tr("Not changed: %1").arg(m_loginStartProblem);
    } else if (!state.problem.isEmpty()) {
        note = honestLine(state.problem).text;
    } else if (!state.otherProgram.isEmpty()) {
        note = tr("Another copy is started: %1. Switch this off and on again to start this one.")
                   .arg(honestLine(state.otherProgram).text);
    }
    setNote(m_loginStartNote, note);
}

void GeneralSettingsPage::showNotifications()
{
    const NotificationLine &line = m_collaborators.notifications.line();
    m_notificationDot->setPixmap(
        statusDot(line.notificationIndicator).pixmap(QSize(dotSide, dotSide), devicePixelRatioF()));
    m_notificationDot->setAccessibleName(indicatorWord(line.notificationIndicator));
    m_notificationLine->setText(honestLine(line.notificationStatus).text);
    using Outcome = TrialNotification::Outcome;
    QString note;
    switch (m_trial.outcome()) {
    case Outcome::None:
        break;
    case Outcome::Sent:
        note = tr("Sending …");
        break;
    case Outcome::Shown:
        note = tr("The desktop has taken the test notification. If you do not see it, look whether "
                  "\"do not disturb\" is on.");
        break;
    case Outcome::Failed:
        note = tr("The test notification was not shown: %1").arg(m_trial.reason());
        break;
    }
    setNote(m_trialNote, note);
}

} // namespace bram
