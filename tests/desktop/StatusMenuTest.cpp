// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/StatusMenu.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"
#include "system/NotificationService.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/DesktopSurface.h"
#include "ui/desktop/PendingPane.h"
#include "ui/desktop/StatusTexts.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

/// The menu over the real core, operated through its actions as a panel does.
class StatusMenuTest : public test::MonitorFixture
{
protected:
    void SetUp() override
    {
        configure(R"({"agents":{"list":[{"id":"main"},{"id":"other_agent & co"}]}})");
        makeConnectedCore();
        actions = std::make_unique<DesktopActions>(DesktopActions::Collaborators {
            .monitor = monitor(),
            .bulkAllow = core->bulkAllow(),
            .allowPartlyShown = core->allowPartlyShown(),
            .record = core->record(),
            .prompts = prompts,
            .tasks = core->tasks(),
            .language = core->language(),
            .environment = core->environment(),
            .clock = clock,
            .surface =
                [] {
                    return desktopSurface(TrayHost::StatusNotifier,
                                          {.kind = NotificationServiceState::Kind::Present,
                                           .name = u"a daemon"_s,
                                           .capabilities = {},
                                           .reason = {}});
                },
        });
        statusMenu
            = std::make_unique<StatusMenu>(*actions, core->language(), MenuDrawing::OwnWindow);
        QObject::connect(&board(), &ApprovalBoard::displayItemsChanged, statusMenu.get(),
                         [this] { update(); });
    }

    void TearDown() override
    {
        statusMenu.reset();
        actions.reset();
    }

    void configure(const QByteArray &content)
    {
        ASSERT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s));
        QFile file(folder.filePath(u".brackwen/brackwen.json"_s));
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(content);
    }

    void update()
    {
        statusMenu->update({.status = {{u"Gateway connected"_s, IndicatorState::Green}},
                            .pending = board().displayItems(),
                            .history = board().history(),
                            .agents = {.available = monitor().agents().availableAgentIds(),
                                       .selected = monitor().agents().selectedAgentId()}});
    }

    void requestAndShow(const ApprovalItem &wanted)
    {
        request(wanted);
        ASSERT_TRUE(test::waitUntil([&] {
            return texts(*submenu("Pending"))
                .join(u'|')
                .contains(menuLabel(wanted.command, MenuDrawing::OwnWindow));
        }));
    }

    static QStringList texts(const QMenu &menu)
    {
        QStringList result;
        for (const QAction *action : menu.actions()) {
            if (action->isVisible() && !action->isSeparator()) {
                result += action->text();
            }
        }
        return result;
    }

    static QAction *entry(const QMenu &menu, const char *beginning)
    {
        for (QAction *action : menu.actions()) {
            if (action->isVisible() && action->text().startsWith(QString::fromUtf8(beginning))) {
                return action;
            }
        }
        qFatal("no menu entry begins with %s", beginning);
    }

    QMenu *submenu(const char *beginning) const
    {
        return entry(statusMenu->menu(), beginning)->menu();
    }

    /// The submenu of the pending request in this row.
    QMenu *requestMenu(qsizetype row) const
    {
        return submenu("Pending")->actions().at(row)->menu();
    }

    test::ScriptedPrompts prompts;
    std::unique_ptr<DesktopActions> actions;
    std::unique_ptr<StatusMenu> statusMenu;
};

TEST(StatusTexts, AnAuditLogThatCannotBeWrittenIsRedAndInTheToolTip)
{
    const AuditLogCondition failing {.isWritable = false, .problem = u"/x: disk full"_s};
    const auto lines = statusLines({}, {}, {}, failing, MenuLanguage::English);
    EXPECT_EQ(lines.constLast().indicator, IndicatorState::Red);
    EXPECT_TRUE(lines.constLast().text.endsWith(failing.problem));
    EXPECT_TRUE(trayToolTip({}, failing, 0, false).contains(lines.constLast().text));
    EXPECT_FALSE(trayToolTip({}, {}, 0, false).contains(u"audit"_s));
    EXPECT_TRUE(trayToolTip({}, {}, 0, true).startsWith(u"BRAM · PRACTICE\n"_s));
    const AuditLogCondition lossy {.lostEvents = 7, .archivesDeletedEarly = 1};
    EXPECT_EQ(statusLines({}, {}, {}, lossy, MenuLanguage::English).size(), lines.size() + 1);
}

TEST_F(StatusMenuTest, EveryStatusLineHasARowThatBeginsOnTheScreen)
{
    const AuditLogCondition worst {
        .isWritable = false, .problem = QString(200, u'x'), .archivesDeletedEarly = 1};
    GatewayStatus::Lines locked;
    locked.remoteApprovalLocked = true;
    const auto lines = statusLines(locked, {}, {}, worst, MenuLanguage::English);
    StatusMenuContent content;
    content.status = lines;
    statusMenu->update(content);
    QStringList rows;
    for (const QAction *row : statusMenu->menu().actions()) {
        if (row->isVisible() && !row->icon().isNull()) {
            rows.append(row->text());
        }
    }
    EXPECT_EQ(rows.size(), lines.size());
    const auto cut = rows.filter(u"The audit log cannot be written"_s);
    ASSERT_EQ(cut.size(), 1);
    EXPECT_TRUE(cut.first().size() < 110 && cut.first().endsWith(u'…'));
}

TEST_F(StatusMenuTest, eachEntryOfARequestDoesWhatItSays)
{
    struct Case {
        const char *entry;
        ApprovalDecision decision;
    };
    int number = 0;
    for (const Case &tried :
         {Case {"Allow Once", ApprovalDecision::AllowOnce}, Case {"Deny", ApprovalDecision::Deny},
          Case {"Always Allow", ApprovalDecision::AllowAlways}}) {
        const QByteArray id = "request-" + QByteArray::number(++number);
        requestAndShow(item(id.constData(), "make_all && run"));
        entry(*requestMenu(0), tried.entry)->trigger();
        ASSERT_TRUE(waitSettled(number));
        EXPECT_EQ(settled.constLast().approvalId, QString::fromLatin1(id));
        EXPECT_EQ(settled.constLast().decision, tried.decision);
        ASSERT_TRUE(test::waitUntil([&] { return board().displayItems().isEmpty(); }));
    }
    requestAndShow(item("copied", "copy me"));
    entry(*requestMenu(0), "Copy Details")->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), item("copied", "copy me").pretty());
    entry(*requestMenu(0), "Copy Approval ID")->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"copied"_s);
    prompts.answers = {0};
    entry(*submenu("All Pending"), "Copy all")->trigger();
    EXPECT_TRUE(test::waitUntil([] {
        return QGuiApplication::clipboard()->text().contains(u"Count: 1\n\n[1]\nID: copied\n"_s);
    }));
    EXPECT_EQ(prompts.questions.constLast().buttons,
              (QStringList {u"클립보드 복사"_s, u"텍스트 파일 저장"_s}));
}

TEST_F(StatusMenuTest, offersASimulationOnlyToWhoAskedForIt)
{
    EXPECT_FALSE(texts(statusMenu->menu()).contains(u"Run Program Simulation"_s));
    StatusMenu offering(*actions, core->language(), MenuDrawing::OwnWindow, SimulationEntry::Shown);
    int wishes = 0;
    QObject::connect(actions.get(), &DesktopActions::simulationRequested, actions.get(),
                     [&] { ++wishes; });
    entry(offering.menu(), "Run Program Simulation")->trigger();
    EXPECT_EQ(wishes, 1);
}

TEST_F(StatusMenuTest, anAgentIsChosenFromItsSubmenuAndEveryAgentOnlyWhenAgreed)
{
    AgentSelection &agents = monitor().agents();
    const auto marked = [this] {
        QStringList result;
        for (const QAction *row : submenu("Agent")->actions()) {
            result += row->isChecked() ? QStringList(row->text()) : QStringList();
        }
        return result;
    };
    update();
    const QStringList rows {u"main"_s, u"other_agent && co"_s, u"All agents (unrestricted)"_s,
                            u"Settings…"_s};
    EXPECT_EQ(texts(*submenu("Agent: main")), rows);
    entry(*submenu("Agent"), "other")->trigger();
    update();
    EXPECT_EQ(agents.selectedAgentId(), u"other_agent & co"_s);
    EXPECT_EQ(marked(), QStringList {rows.at(1)});

    entry(*submenu("Agent: other_agent && co"), "All")->trigger(); // and turned away from
    ASSERT_TRUE(test::waitUntil([this] { return core->tasks().running().isEmpty(); }));
    update();
    EXPECT_EQ(prompts.questions.size(), 1);
    EXPECT_EQ(marked(), QStringList {rows.at(1)});

    Q_EMIT statusMenu->menu().aboutToShow();
    configure(R"({"agents":{"main":{}}})");
    agents.refreshAvailableAgentIdsFromConfig();
    update();
    EXPECT_EQ(texts(*submenu("Agent: main")), rows) << "nothing moves under the pointer";
    prompts.answers = {0};
    entry(*submenu("Agent"), "All")->trigger();
    ASSERT_TRUE(test::waitUntil([&] { return agents.isUnrestricted(); }));
    Q_EMIT statusMenu->menu().aboutToShow();
    update();
    EXPECT_EQ(texts(*submenu("Agent: All agents")).size(), 3);
}

TEST_F(StatusMenuTest, whatIsTakenOutIsWhereTheOperatorWantedIt)
{
    const auto take = [this](const char *beginning) {
        entry(*submenu("Audit"), beginning)->trigger();
        EXPECT_TRUE(test::waitUntil([this] { return core->tasks().running().isEmpty(); }));
    };
    const QString report = folder.filePath(u"report.md"_s);
    prompts.files = {report};
    take("Save last 7 days");
    EXPECT_GT(QFileInfo(report).size(), 0);
    EXPECT_EQ(prompts.alerts.constLast().title, u"Saved"_s);
    take("View last 7 days");
    EXPECT_GT(QFileInfo(prompts.opened.value(0)).size(), 0);

    prompts.files = {folder.path()};
    take("Export diagnostics");
    const auto bundle = QDir(folder.path()).entryList({u"bram-diagnostics-*"_s}).value(0);
    QFile snapshot(folder.filePath(bundle + u"/snapshot.json"_s));
    ASSERT_TRUE(snapshot.open(QFile::ReadOnly));
    const QJsonObject surface
        = QJsonDocument::fromJson(snapshot.readAll()).object().value(u"surface"_s).toObject();
    EXPECT_EQ(surface.value(u"kind"_s), u"desktop"_s);
    EXPECT_EQ(surface.value(u"displayServer"_s), QGuiApplication::platformName());
    EXPECT_EQ(surface.value(u"trayHost"_s), u"StatusNotifierItem"_s);
    EXPECT_EQ(surface.value(u"notificationService"_s), u"a daemon"_s);
}

TEST_F(StatusMenuTest, decidesOnlyWhatWasRead)
{
    requestAndShow(item("changing", "harmless"));
    QStringList refused;
    QObject::connect(actions.get(), &DesktopActions::changedSinceShown, actions.get(),
                     [&](const QString &id) { refused += id; });
    Q_EMIT statusMenu->menu().aboutToShow();
    QAction *allow = entry(*requestMenu(0), "Allow Once");
    request(item("late", "rm -rf /"));
    gateway.announce(item("changing", "rm -rf /"));
    ASSERT_TRUE(
        test::waitUntil([&] { return board().find(u"changing"_s)->command == u"rm -rf /"_s; }));

    allow->trigger();
    EXPECT_EQ(refused, QStringList {u"changing"_s});
    entry(*submenu("All Pending"), "Approve All")->trigger();
    EXPECT_TRUE(monitor().decisions().isIdle()) << "one had changed and one came later";

    // Once the menu is opened anew, it is about what it shows then.
    Q_EMIT statusMenu->menu().aboutToHide();
    ASSERT_TRUE(test::waitUntil([&] {
        return texts(*submenu("Pending"))
            == QStringList {u"HIGH RISK · main: rm -rf /"_s, u"HIGH RISK · main: rm -rf /"_s};
    }));
    Q_EMIT statusMenu->menu().aboutToShow();
    prompts.answers = {0}; // both are of high risk
    entry(*submenu("All Pending"), "Approve All")->trigger();
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(received.size(), 2);
}

TEST_F(StatusMenuTest, isBroughtUpToDateBeforeItOpens)
{
    QObject::disconnect(&board(), nullptr, statusMenu.get(), nullptr);
    QObject::connect(statusMenu.get(), &StatusMenu::aboutToOpen, actions.get(),
                     [this] { update(); });
    request(item("a", "late"));
    Q_EMIT statusMenu->menu().aboutToShow();
    EXPECT_EQ(texts(*submenu("Pending")), QStringList {u"main: late"_s});
}

TEST_F(StatusMenuTest, whatComesAfterTheOpeningIsInNoBulkAction)
{
    requestAndShow(item("seen", "harmless"));
    Q_EMIT statusMenu->menu().aboutToShow();
    // A panel sends these three one by one, and the program goes on between them.
    requestAndShow(item("unseen", "rm -rf /"));
    Q_EMIT statusMenu->menu().aboutToHide();
    QCoreApplication::processEvents();
    update();
    QAction *approveAll = entry(*submenu("All Pending"), "Approve All");
    EXPECT_EQ(approveAll->text(), u"Approve All Pending (1)"_s);
    prompts.answers = {0};
    approveAll->trigger();
    ASSERT_TRUE(waitSettled(1));
    EXPECT_EQ(received.size(), 1);
    EXPECT_EQ(received.constFirst().approvalId, u"seen"_s);
    EXPECT_TRUE(monitor().decisions().isIdle());
}

TEST_F(StatusMenuTest, aBulkRowIsAboutTheRequestsThatItCounts)
{
    requestAndShow(item("counted", "harmless"));
    const QMenu &bulk = *submenu("All Pending");
    const auto rows = [&bulk] { return bulk.actions().first(3); };
    const QPointer<QAction> before = rows().constFirst();
    EXPECT_EQ(texts(bulk).first(3),
              QStringList({u"Approve All Pending (1)"_s, u"Always Allow All Pending (1)"_s,
                           u"Deny All pending (1)"_s}));
    requestAndShow(item("later", "rm -rf /"));
    EXPECT_EQ(texts(bulk).constFirst(), u"Approve All Pending (2)"_s);
    EXPECT_TRUE(test::waitUntil([&] { return before.isNull(); }))
        << "a panel that has not read the menu anew clicks on nothing";
    const QList<QAction *> same = rows();
    update();
    EXPECT_EQ(rows(), same) << "as long as nothing changes, what was read can be clicked";

    Q_EMIT statusMenu->menu().aboutToShow();
    requestAndShow(item("latest", "ls"));
    entry(bulk, "Deny All")->trigger();
    ASSERT_TRUE(waitSettled(2));
    EXPECT_EQ(board().displayItems().size(), 1);
    EXPECT_TRUE(prompts.questions.isEmpty()) << "to deny needs no question";
}

TEST_F(StatusMenuTest, offersAllowOnlyBesideACommandThatItShowsWhole)
{
    const auto decisions = [this] {
        QStringList found;
        for (const QString &text : texts(*requestMenu(0))) {
            if (text.startsWith(u"Allow"_s) || text.startsWith(u"Always"_s)
                || text.startsWith(u"Deny"_s) || text.startsWith(u"To Allow"_s)) {
                found.append(text);
            }
        }
        return found;
    };
    const QStringList all {u"Allow Once"_s, u"Always Allow"_s, u"Deny"_s};
    const QStringList cautious {u"To Allow It, Show It Whole…"_s, u"Deny"_s};
    const struct {
        QString command;
        QStringList decisions;
    } rows[] {
        {u"make "_s + QString(100, u'a'), all},
        {u"echo "_s + QString(900, u'a') + u" ; find ~ -delete"_s, cautious},
        {u"# tidy up\nfind ~ -delete"_s, cautious},
    };
    for (const auto &row : rows) {
        auto wanted = item("one");
        wanted.command = row.command;
        monitor().handleGatewayEvent(ApprovalRequested {wanted});
        update();
        EXPECT_EQ(decisions(), row.decisions) << qPrintable(row.command);
    }
    core->allowPartlyShown().setOn(true);
    EXPECT_EQ(decisions(), all);
}

TEST_F(StatusMenuTest, theListInTheWindowAllowsWhatWasReadToItsEnd)
{
    request(item("long", QByteArray("make\n").repeated(200).constData()));
    PendingPane pane(*actions);
    pane.setItems(board().displayItems());
    pane.show();
    auto &list = *pane.findChild<QListView *>();
    list.setCurrentIndex(list.model()->index(0, 0));
    const auto buttons = pane.findChildren<QPushButton *>();
    const auto isEnabled = [&buttons](const QString &text) {
        return (*std::ranges::find(buttons, text, &QPushButton::text))->isEnabled();
    };
    EXPECT_FALSE(test::waitUntil([&] { return isEnabled(u"Always Allow"_s); }, 1200));
    EXPECT_TRUE(isEnabled(u"Deny"_s));
    auto &bar = *pane.findChild<CommandTextView *>()->verticalScrollBar();
    bar.setValue(bar.maximum());
    EXPECT_TRUE(test::waitUntil([&] { return isEnabled(u"Always Allow"_s); }));
}

TEST_F(StatusMenuTest, whatWasAlwaysAllowedInBulkCanBeUndone)
{
    requestAndShow(item("one", "make"));
    prompts.answers = {0, 0}; // to the question, and to the offer
    entry(*submenu("All Pending"), "Always Allow All")->trigger();
    ASSERT_TRUE(test::waitUntil([this] { return prompts.questions.size() == 2; }));
    EXPECT_EQ(prompts.questions.constLast().title, u"Added to the always-allow list: 1"_s);
    EXPECT_TRUE(test::waitUntil([this] { return core->alwaysAllow().list().entries().isEmpty(); }));
}

TEST_F(StatusMenuTest, isUpToDateWhenOpenedAgainThoughNobodySaidThatItWasClosed)
{
    requestAndShow(item("old", "first"));
    Q_EMIT statusMenu->menu().aboutToShow();
    gateway.resolveElsewhere(u"old"_s);
    requestAndShow(item("new", "second"));
    ASSERT_EQ(texts(*submenu("Pending")),
              (QStringList {u"(ended) main: first"_s, u"main: second"_s}));
    Q_EMIT statusMenu->menu().aboutToShow();
    EXPECT_EQ(texts(*submenu("Pending")), QStringList {u"main: second"_s});
    EXPECT_EQ(texts(*submenu("Recent History")).size(), 4);
    EXPECT_EQ(texts(*submenu("All Pending")).constFirst(), u"Approve All Pending (1)"_s);
}

TEST_F(StatusMenuTest, anOpenMenuFollowsWithoutMoving)
{
    requestAndShow(item("first", "one"));
    requestAndShow(item("second", "two"));
    const QStringList before = texts(*submenu("Pending"));
    Q_EMIT statusMenu->menu().aboutToShow();
    const auto rowsOfTop = texts(statusMenu->menu()).size();

    gateway.resolveElsewhere(u"second"_s);
    requestAndShow(item("third", "three"));
    const QStringList open = texts(*submenu("Pending"));
    ASSERT_EQ(open.size(), 3);
    EXPECT_EQ(open.constLast(), u"main: three"_s);
    const qsizetype ended = before.indexOf(u"main: two"_s);
    EXPECT_EQ(open.at(ended), u"(ended) main: two"_s);
    EXPECT_FALSE(submenu("Pending")->actions().at(ended)->isEnabled());
    EXPECT_EQ(open.at(1 - ended), before.at(1 - ended));
    EXPECT_EQ(texts(statusMenu->menu()).size(), rowsOfTop);

    Q_EMIT statusMenu->menu().aboutToHide();
    EXPECT_TRUE(test::waitUntil([&] { return texts(*submenu("Pending")).size() == 2; }));
}

TEST_F(StatusMenuTest, manyRequestsAreListedUpToALimitThatIsSaid)
{
    for (int i = 0; i < 60; ++i) {
        gateway.announce(item(qPrintable(u"request-%1"_s.arg(i)), "ls"));
    }
    ASSERT_TRUE(test::waitUntil(
        [&] { return !board().history().isEmpty() && board().history().size() == 60; }));
    update();
    const QStringList rows = texts(*submenu("Pending"));
    const qsizetype pending = board().displayItems().size();
    EXPECT_EQ(rows.size(), std::min<qsizetype>(pending, 50) + (pending > 50 ? 1 : 0));
    const QStringList history = texts(*submenu("Recent History"));
    EXPECT_EQ(history.size(), HistoryMenu::mostRows + 2);
}

TEST_F(StatusMenuTest, anotherLanguageRelabelsEverything)
{
    requestAndShow(item("request", "harmless"));
    const QStringList english
        = texts(statusMenu->menu()) + texts(*requestMenu(0)) + texts(*submenu("All Pending"));
    QMenu *pending = submenu("Pending");
    QMenu *bulk = submenu("All Pending");
    ASSERT_TRUE(core->language().choose(MenuLanguage::Korean));
    statusMenu->retranslate();
    const QStringList korean
        = texts(statusMenu->menu()) + texts(*pending->actions().at(0)->menu()) + texts(*bulk);
    ASSERT_EQ(korean.size(), english.size());
    for (qsizetype i = 0; i < english.size(); ++i) {
        const bool isFixed
            = english.at(i) == u"Gateway connected"_s || english.at(i) == u"harmless"_s;
        EXPECT_EQ(korean.at(i) == english.at(i), isFixed) << qPrintable(english.at(i));
    }
}

} // namespace
} // namespace bram
