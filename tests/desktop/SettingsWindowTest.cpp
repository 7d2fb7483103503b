// SPDX-License-Identifier: Apache-2.0
// The settings with the real core, files, dialogs and notification daemon, operated as a person does.
#include "ui/desktop/SettingsWindow.h"
#include "monitor/ApprovalNotifications.h"
#include "monitor/MonitorFixture.h"
#include "system/FileOpener.h"
#include "system/linux/AutostartEntry.h"
#include "system/linux/DesktopNotifications.h"
#include "ui/desktop/AboutWindow.h"
#include "ui/desktop/ChoiceBox.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/DesktopPrompts.h"
#include "ui/desktop/PartsUsed.h"
#include "ui/desktop/UtilityWindows.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QMessageBox>
#include <QProcess>
#include <QTest>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using test::waitUntil;

class RecordingOpener final : public FileOpener
{
public:
    Reply<FileOpened> open(const QString &path) override
    {
        opened += path;
        const ReplySource<FileOpened> source(FileOpened {});
        source.answer(outcome);
        return source.reply();
    }
    QStringList opened;
    FileOpened outcome;
};

class Settings : public test::MonitorFixture
{
protected:
    void SetUp() override
    {
        configure("{\"agents\":{\"list\":[{\"id\":\"dev\"},{\"id\":\"main\"}]}}");
        makeConnectedCore();
        prompts = std::make_unique<DesktopPrompts>(core->preferences(), opener);
        actions = std::make_unique<DesktopActions>(
            DesktopActions::Collaborators {.monitor = monitor(),
                                           .bulkAllow = core->bulkAllow(),
                                           .allowPartlyShown = core->allowPartlyShown(),
                                           .record = core->record(),
                                           .prompts = *prompts,
                                           .tasks = core->tasks(),
                                           .language = core->language(),
                                           .environment = core->environment(),
                                           .clock = clock,
                                           .surface = [] { return SurfaceFacts(); }});
        windows = std::make_unique<UtilityWindows>(UtilityWindows::Collaborators {
            .actions = *actions,
            .agents = monitor().agents(),
            .language = core->language(),
            .tasks = core->tasks(),
            .notificationService = service,
            .notifications = notifications,
            .settings = {.allowPartlyShown = core->allowPartlyShown(),
                         .unencryptedGateway = core->unencryptedGateway(),
                         .sharedPolling = core->sharedPolling(),
                         .telegram = core->telegram(),
                         .loginStart = &loginStart,
                         .opener = opener,
                         .places = [this] { return places; }}});
        windows->showSettings();
    }
    void TearDown() override
    {
        prompts->stop();
        windows.reset();
        actions.reset();
    }

    void configure(const QByteArray &content)
    {
        QDir(folder.path()).mkpath(u".brackwen"_s);
        write(folder.filePath(u".brackwen/brackwen.json"_s), content);
    }
    static void write(const QString &path, const QByteArray &content)
    {
        QFile file(path);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }

    template<typename Window>
    static Window *shown()
    {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            if (window->isVisible() && qobject_cast<Window *>(window) != nullptr) {
                return qobject_cast<Window *>(window);
            }
        }
        return nullptr;
    }
    template<typename Widget>
    static Widget *named(const QString &name)
    {
        for (Widget *widget : shown<SettingsWindow>()->findChildren<Widget *>()) {
            const auto *seen = QAccessible::queryAccessibleInterface(widget);
            // A box is called what it shows here, and its label is told of beside it.
            if (widget->accessibleName() == name || seen->text(QAccessible::Name) == name) {
                return widget;
            }
        }
        ADD_FAILURE() << "nothing is called " << qPrintable(name);
        return nullptr;
    }
    static bool says(const QString &text)
    {
        const auto labels = shown<SettingsWindow>()->findChildren<QLabel *>();
        return std::ranges::any_of(labels, [&](const QLabel *label) {
            return label->isVisibleTo(label->parentWidget()) && label->text().contains(text);
        });
    }
    /// Opens the list and goes down (or up) from what is chosen now.
    static void choose(const QString &box, int steps)
    {
        auto *choice = named<ChoiceBox>(box);
        QTest::keyClick(choice, Qt::Key_Down);
        ASSERT_TRUE(waitUntil([&] { return choice->view()->isVisible(); }));
        for (int i = 0; i < std::abs(steps); ++i) {
            QTest::keyClick(choice->view(), steps > 0 ? Qt::Key_Down : Qt::Key_Up);
        }
        QTest::keyClick(choice->view(), Qt::Key_Return);
    }
    /// On the disk: another program that reads the file.
    QString preference(const char *key) const
    {
        return Preferences(core->places().preferencesFile)
            .text(QString::fromLatin1(key))
            .value_or(u"(none)"_s);
    }
    static QString run(const QString &program, const QStringList &arguments = {})
    {
        QProcess process;
        process.start(program, arguments);
        EXPECT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }));
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    }

    RecordingOpener opener;
    DesktopNotifications service;
    ApprovalNotifications notifications {service, clock, log};
    AutostartEntry loginStart {{.userFolder = folder.filePath(u"autostart"_s),
                                .systemFolders = {},
                                .program = QCoreApplication::applicationFilePath()}};
    QList<FilePlace> places {
        {FilePlace::Kind::Preferences, folder.filePath(u"preferences.ini"_s)},
        {FilePlace::Kind::Data, folder.path()},
        {FilePlace::Kind::Configuration, folder.filePath(u".brackwen/brackwen.json"_s)},
        {FilePlace::Kind::ExecApprovals, folder.filePath(u"nowhere"_s)}};
    std::unique_ptr<DesktopPrompts> prompts;
    std::unique_ptr<DesktopActions> actions;
    std::unique_ptr<UtilityWindows> windows;
};

TEST_F(Settings, everyAgentIsChosenOnlyWhenAgreedWhileRequestsGoOn)
{
    choose(u"Agent"_s, 1); // from dev, the first
    EXPECT_EQ(preference("approvals.selected-agent-id"), u"main"_s);

    choose(u"Agent"_s, 1); // over the line to all
    ASSERT_TRUE(waitUntil([] { return shown<QMessageBox>() != nullptr; }));
    EXPECT_EQ(shown<QMessageBox>()->text(), u"Confirm Unrestricted Mode"_s);
    EXPECT_EQ(named<ChoiceBox>(u"Agent"_s)->currentText(), u"main"_s);
    request(item("meanwhile"));
    decide("meanwhile", ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(received.size(), 1);
    QTest::keyClick(shown<QMessageBox>(), Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([] { return shown<QMessageBox>() == nullptr; }));
    EXPECT_EQ(preference("approvals.selected-agent-id"), u"main"_s);

    ASSERT_TRUE(
        waitUntil([this] { return !core->tasks().running().contains(u"choice of agent"_s); }));
    choose(u"Agent"_s, 1);
    ASSERT_TRUE(waitUntil([] { return shown<QMessageBox>() != nullptr; }));
    EXPECT_EQ(shown<QMessageBox>()->buttons().constFirst()->text(), u"Apply Unrestricted"_s);
    QAbstractButton *apply = shown<QMessageBox>()->buttons().constFirst();
    ASSERT_TRUE(waitUntil([apply] { return apply->isEnabled(); }));
    apply->click();
    ASSERT_TRUE(waitUntil([this] { return monitor().agents().isUnrestricted(); }));
    EXPECT_EQ(preference("approvals.selected-agent-id"), u"__all__"_s);
    EXPECT_EQ(preference("approvals.selected-agent-unrestricted-confirmed"), u"true"_s);
    EXPECT_TRUE(says(u"The requests of every agent are shown"_s));

    auto *agents = named<ChoiceBox>(u"Agent"_s);
    agents->showPopup();
    configure("{\"agents\":{\"alone\":{}}}");
    named<QPushButton>(u"Refresh"_s)->click();
    EXPECT_EQ(agents->findText(u"alone"_s), -1) << "no row changes under the pointer";
    agents->hidePopup();
    EXPECT_TRUE(waitUntil([agents] { return agents->findText(u"alone"_s) >= 0; }));
    configure("{}");
    named<QPushButton>(u"Refresh"_s)->click();
    EXPECT_TRUE(says(u"names no agent"_s));
}

TEST_F(Settings, languageAndSwitchesTakeEffectAtOnceAndAreOnTheDisk)
{
    auto *languages = named<ChoiceBox>(u"Language"_s);
    for (const Qt::Key key : {Qt::Key_End, Qt::Key_PageDown, Qt::Key_K}) {
        QTest::keyClick(languages, key);
    }
    QWheelEvent wheel({5, 5}, languages->mapToGlobal(QPointF(5, 5)), {}, {0, -120}, Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(languages, &wheel);
    EXPECT_EQ(core->language().current(), MenuLanguage::English) << "a slip of the hand";
    choose(u"Language"_s, 1);
    EXPECT_EQ(preference("menu.language.v2"), u"kor"_s);
    ASSERT_TRUE(waitUntil([] { return shown<SettingsWindow>()->windowTitle() == u"설정"_s; }));
    choose(u"언어"_s, -1);
    EXPECT_EQ(preference("menu.language.v2"), u"eng"_s);
    ASSERT_TRUE(waitUntil([] { return shown<SettingsWindow>()->windowTitle() == u"Settings"_s; }));

    auto *polling = named<QCheckBox>(u"Fetch the messages of a bot that the platform uses too"_s);
    polling->click();
    EXPECT_EQ(preference("telegram.allow-shared-bot-polling"), u"true"_s);
    core->sharedPolling().setAllowSharedBotPollingOverride(false); // by the terminal, say
    EXPECT_FALSE(polling->isChecked());

    auto *login = named<QCheckBox>(u"Start BRAM when I log in"_s);
    login->click();
    EXPECT_TRUE(loginStart.state().isOn);
    login->click();
    EXPECT_FALSE(QFile::exists(folder.filePath(u"autostart/bram.desktop"_s)));
    QDir(folder.path()).rmdir(u"autostart"_s);
    write(folder.filePath(u"autostart"_s), "in the way");
    login->click();
    EXPECT_FALSE(login->isChecked());
    EXPECT_TRUE(says(u"Not changed: "_s));
}

TEST_F(Settings, whatIsAllowedAtOnesOwnRiskIsSwitchedOn)
{
    named<QCheckBox>(u"Offer allow also where a command is not shown whole"_s)->click();
    EXPECT_TRUE(core->allowPartlyShown().isOn());
    EXPECT_EQ(preference(allowPartlyShownKey.data()), u"true"_s);
    auto *unencrypted = named<QCheckBox>(u"Allow an unencrypted gateway on another machine"_s);
    core->unencryptedGateway().setOn(true); // at the terminal of the same program, say
    EXPECT_TRUE(unencrypted->isChecked());
}

TEST_F(Settings, aTestNotificationSaysWhatBecameOfIt)
{
    notifications.start();
    const auto displayed = [] { return run(u"dunstctl"_s, {u"count"_s, u"displayed"_s}).toInt(); };
    auto *send = named<QPushButton>(u"Send a Test Notification"_s);
    send->click();
    EXPECT_TRUE(waitUntil([] { return says(u"has taken the test notification"_s); }));
    EXPECT_EQ(displayed(), 1);
    send->click();
    EXPECT_TRUE(waitUntil([] { return says(u"has taken the test notification"_s); }));
    EXPECT_EQ(displayed(), 1);
    run(u"stop-notifications"_s);
    send->click();
    EXPECT_TRUE(waitUntil([] { return says(u"The test notification was not shown: "_s); }));
    run(u"start-notifications"_s);
}

TEST_F(Settings, filesOpenWhereTheyLieAndAMissingProgramIsSaid)
{
    core->preferences().save();
    const struct {
        QString button;
        QString opened;
    } rows[] {{u"Open Folder: Preferences"_s, folder.path()},
              {u"Open Folder: Audit log and reports"_s, folder.path()},
              {u"Open: Platform configuration"_s, places.at(2).path}};
    for (const auto &row : rows) {
        named<QPushButton>(row.button)->click();
        ASSERT_TRUE(waitUntil([this] { return core->tasks().running().isEmpty(); }));
        EXPECT_EQ(opener.opened.constLast(), row.opened);
    }
    EXPECT_FALSE(
        named<QPushButton>(u"Not There Yet: Platform's always-allow lists"_s)->isEnabled());
    opener.outcome = std::unexpected(Error {u"cannot open it: why"_s});
    named<QPushButton>(rows[0].button)->click();
    EXPECT_TRUE(waitUntil([] { return says(u"cannot open it: why"_s); }));
}

/// In both languages, as assistive technologies and the keyboard have it.
TEST_F(Settings, everythingHasANameAndEachLetterOneMeaning)
{
    windows->showAbout();
    for (const MenuLanguage language : {MenuLanguage::English, MenuLanguage::Korean}) {
        core->language().choose(language);
        QCoreApplication::processEvents();
        for (QWidget *window : {static_cast<QWidget *>(shown<SettingsWindow>()),
                                static_cast<QWidget *>(shown<AboutWindow>())}) {
            for (QWidget *widget : window->findChildren<QWidget *>()) {
                const bool isOperated = (widget->focusPolicy() & Qt::TabFocus) != 0
                    && qobject_cast<QAbstractItemView *>(widget) == nullptr;
                const auto *seen = QAccessible::queryAccessibleInterface(widget);
                EXPECT_TRUE(!isOperated || !seen->text(QAccessible::Name).isEmpty())
                    << widget->metaObject()->className();
            }
        }
        const auto *tabs = shown<SettingsWindow>()->findChild<QTabWidget *>();
        QString letters;
        const auto take = [&letters](const QString &text) {
            const auto letter = QKeySequence::mnemonic(text).toString().right(1);
            EXPECT_FALSE(!letter.isEmpty() && letters.contains(letter)) << qPrintable(text);
            letters += letter;
        };
        take(shown<SettingsWindow>()->findChildren<QPushButton *>().constLast()->text());
        for (int i = 0; i < tabs->count(); ++i) {
            take(tabs->tabText(i));
        }
        const QString common = letters;
        for (int i = 0; i < tabs->count(); ++i) {
            letters = common;
            for (const QLabel *label : tabs->widget(i)->findChildren<QLabel *>()) {
                take(label->buddy() != nullptr ? label->text() : QString());
            }
            for (const auto *button : tabs->widget(i)->findChildren<QAbstractButton *>()) {
                take(button->text());
            }
        }
    }
}

TEST_F(Settings, theLicencesAreThoseOfTheInstalledLibraries)
{
    for (const PartUsed &part : partsUsed()) {
        QFile file(u"/usr/share/doc/%1/copyright"_s.arg(part.package));
        ASSERT_TRUE(file.open(QFile::ReadOnly)) << qPrintable(part.package);
        const QString text = QString::fromUtf8(file.readAll());
        for (const QString &holder : part.holders.split(u", "_s)) {
            EXPECT_TRUE(text.contains(holder, Qt::CaseInsensitive)) << qPrintable(holder);
        }
        // The old form of these files gives the text without a name.
        const QString licence
            = part.licence.section(u'-', 0, part.licence.startsWith(u'L') ? 1 : 0);
        EXPECT_TRUE(
            text.contains(QString(u"License: "_s + licence).remove(u".0"_s), Qt::CaseInsensitive)
            || text.contains(QString(u"License: "_s + licence), Qt::CaseInsensitive)
            || licence == u"X11"_s)
            << qPrintable(part.name);
    }
}

} // namespace
} // namespace bram
