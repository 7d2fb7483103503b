// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowWindowPresenter.h"

#include "allowlist/CommandDigest.h"
#include "monitor/MonitorFixture.h"
#include "support/ScriptedPrompts.h"
#include "system/linux/XdgFileOpener.h"
#include "ui/desktop/AlwaysAllowListPane.h"
#include "ui/desktop/AlwaysAllowModel.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/DesktopActions.h"
#include "ui/desktop/DesktopPrompts.h"
#include "ui/desktop/RecordPane.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QTest>

#include <latch>

namespace bram
{

using namespace Qt::StringLiterals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::UnorderedElementsAre;

namespace
{
/// The list manager over the real core and real files, operated through its controls.
class AlwaysAllowWindowTest : public test::MonitorFixture
{
protected:
    AlwaysAllowWindowTest() { EXPECT_TRUE(QDir(folder.path()).mkpath(u".brackwen"_s)); }

    ~AlwaysAllowWindowTest() override
    {
        // The last operation may still be about to tell how it ended.
        const auto isTelling = [this] {
            const QStringList running = core->tasks().running();
            return running.contains(u"list manager"_s) || running.contains(u"weekly report"_s)
                || running.contains(u"diagnostics bundle"_s);
        };
        EXPECT_TRUE(!core || test::waitUntil([&] { return !isTelling(); }));
        presenter.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    void platformAllows(const QStringList &mainCommands, const QStringList &otherCommands = {})
    {
        const auto list = [](const QStringList &commands) {
            return commands.isEmpty() ? QString() : u'"' + commands.join(u"\",\""_s) + u'"';
        };
        QFile file(platformFile);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(
            u"{\"agents\":{\"main\":{\"allowlist\":[%1]},\"o\\u202Eb\":{\"allowlist\":[%2]}}}"_s
                .arg(list(mainCommands), list(otherCommands))
                .toUtf8());
    }
    QByteArray content(const QString &path) const
    {
        QFile file(path);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList filesIn(const QString &path) const
    {
        return QDir(folder.filePath(path)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    /// With the platform's commands, and "git push" and "own one" on the own list.
    void open(OperatorPrompts *otherPrompts = nullptr)
    {
        makeConnectedCore();
        core->start();
        for (const char *command : {"git push", "own one"}) {
            request(item(command, command));
            decide(command, ApprovalDecision::AllowAlways);
        }
        ASSERT_TRUE(waitSettled(2));
        OperatorPrompts &used = otherPrompts != nullptr ? *otherPrompts : prompts;
        actions = std::make_unique<DesktopActions>(
            DesktopActions::Collaborators {.monitor = monitor(),
                                           .bulkAllow = core->bulkAllow(),
                                           .allowPartlyShown = core->allowPartlyShown(),
                                           .record = core->record(),
                                           .prompts = used,
                                           .tasks = core->tasks(),
                                           .language = core->language(),
                                           .environment = core->environment(),
                                           .clock = clock,
                                           .surface = [] { return SurfaceFacts(); }});
        presenter = std::make_unique<AlwaysAllowWindowPresenter>(
            AlwaysAllowWindow::Collaborators {.operations = core->alwaysAllow(),
                                              .record = actions->record(),
                                              .board = board(),
                                              .audit = core->audit(),
                                              .prompts = used,
                                              .tasks = core->tasks(),
                                              .clock = clock,
                                              .log = log});
        presenter->show();
    }

    static QList<AlwaysAllowWindow *> windows()
    {
        QList<AlwaysAllowWindow *> found;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *window = qobject_cast<AlwaysAllowWindow *>(widget)) {
                found.append(window);
            }
        }
        return found;
    }
    static AlwaysAllowWindow &window() { return *windows().constFirst(); }
    static AlwaysAllowListPane &pane() { return *window().findChild<AlwaysAllowListPane *>(); }
    static QTableView &table() { return *pane().findChild<QTableView *>(); }
    static QLineEdit &searchField() { return *pane().findChild<QLineEdit *>(); }

    static QStringList rows()
    {
        QStringList texts;
        for (int row = 0; row < table().model()->rowCount(); ++row) {
            texts.append(table().model()->index(row, 0).data().toString());
        }
        return texts;
    }
    static QStringList selected()
    {
        QStringList texts;
        for (const AlwaysAllowEntry &entry : pane().selected()) {
            texts.append(entry.command);
        }
        return texts;
    }
    static void select(const QStringList &commands)
    {
        table().clearSelection();
        for (const QString &command : commands) {
            ASSERT_TRUE(rows().contains(command)) << qPrintable(command);
            table().selectionModel()->select(
                table().model()->index(static_cast<int>(rows().indexOf(command)), 0),
                QItemSelectionModel::Select | QItemSelectionModel::Rows);
        }
    }

    static QStringList buttonTexts()
    {
        QStringList texts;
        for (const auto *button : window().findChildren<QPushButton *>()) {
            if (button->isVisible()) {
                texts.append(button->text());
            }
        }
        return texts;
    }
    static QStringList labelTexts()
    {
        QStringList texts;
        for (const auto *label : window().findChildren<QLabel *>()) {
            if (label->isVisible()) {
                texts.append(label->text());
            }
        }
        return texts;
    }
    void push(const QString &text)
    {
        for (auto *button : window().findChildren<QPushButton *>()) {
            if (button->text() == text) {
                ASSERT_TRUE(test::waitUntil([&] { return button->isEnabled(); }));
                QTest::mouseClick(button, Qt::LeftButton);
                return;
            }
        }
        FAIL() << "no button " << qPrintable(text);
    }
    [[nodiscard]] bool waitForEntries(const QStringList &commands)
    {
        return test::waitUntil([&] {
            QStringList now;
            for (const AlwaysAllowEntry &entry : core->alwaysAllow().list().entries()) {
                now.append(entry.command);
            }
            return now == commands;
        });
    }

    const QString platformFile = folder.filePath(u".brackwen/exec-approvals.json"_s);
    const QString preferencesFile = folder.filePath(u"preferences.ini"_s);
    test::ScriptedPrompts prompts;
    std::unique_ptr<DesktopActions> actions;
    std::unique_ptr<AlwaysAllowWindowPresenter> presenter;
};
} // namespace

TEST_F(AlwaysAllowWindowTest, EachControlHasItsEffectOnTheDisk)
{
    platformAllows({u"apt list"_s, u"git push"_s}, {u"make all"_s});
    open();
    const auto isInOwnList = [this](const QString &command) {
        return content(preferencesFile).contains(normalizedCommandDigest(command)->toLatin1());
    };
    const QString backup = folder.filePath(u"backup.txt"_s);
    const QString report = folder.filePath(u"report.md"_s);
    struct Case {
        QString button;
        QList<qsizetype> answers;
        QStringList files;
        std::function<bool()> hasHappened;
    };
    const Case cases[] = {
        {u"Load approval list"_s,
         {0},
         {},
         [&] { return filesIn(u".brackwen/approvals-menu-backups"_s).size() == 1; }},
        {u"Register to always-allow list"_s,
         {0},
         {},
         [&] { return content(platformFile).count("make all") == 2; }},
        {u"Backup approval list"_s,
         {},
         {backup},
         [&] { return content(backup).contains("\nCount: 4\n"); }},
        {u"Add All approval list to app list"_s,
         {0},
         {},
         [&] { return isInOwnList(u"apt list"_s) && isInOwnList(u"make all"_s); }},
        {u"Select approval-list deletion"_s,
         {2, 0},
         {},
         [&] {
             return !isInOwnList(u"own one"_s) && !content(platformFile).contains("apt list")
                 && table().model()->rowCount() == 0;
         }},
        {u"Restore backed-up approval list"_s,
         {0},
         {backup},
         [&] { return isInOwnList(u"own one"_s) && content(platformFile).contains("apt list"); }},
        {u"Save last 7 days audit data"_s,
         {},
         {report},
         [&] { return content(report).contains("BRAM Weekly Audit Report"); }},
        {u"View last 7 days audit data"_s,
         {},
         {},
         [&] { return prompts.opened.size() == 1 && QFile::exists(prompts.opened.constFirst()); }},
        {u"Export diagnostics bundle"_s,
         {},
         {folder.path()},
         [&] { return filesIn({}).filter(u"bram-diagnostics-"_s).size() == 1; }},
    };
    for (const Case &control : cases) {
        prompts.answers = control.answers;
        prompts.files = control.files;
        push(control.button);
        EXPECT_TRUE(test::waitUntil(control.hasHappened)) << qPrintable(control.button);
    }
    select({u"apt list"_s});
    push(u"Copy ID"_s);
    EXPECT_EQ(QGuiApplication::clipboard()->text(), *normalizedCommandDigest(u"apt list"_s));
    prompts.answers = {0};
    push(u"Remove Allow"_s);
    ASSERT_TRUE(test::waitUntil([&] { return !isInOwnList(u"apt list"_s); }));
    EXPECT_THAT(buttonTexts(), Contains(u"Add to app local list"_s));
    push(u"Add to app local list"_s);
    EXPECT_TRUE(test::waitUntil([&] { return isInOwnList(u"apt list"_s); }));
    ASSERT_TRUE(test::waitUntil([] { return buttonTexts().contains(u"Remove Allow"_s); }));
    EXPECT_THAT(buttonTexts(), testing::Not(Contains(u"Add to app local list"_s)))
        << "it is in both lists";
}

TEST_F(AlwaysAllowWindowTest, RemovesWhatIsSelectedAndNothingElse)
{
    platformAllows({u"apt list"_s, u"cat x"_s, u"git push"_s, u"zip y"_s});
    open();
    table().sortByColumn(AlwaysAllowModel::Command, Qt::DescendingOrder);
    EXPECT_THAT(rows(),
                ElementsAre(u"zip y"_s, u"own …"_s, u"git push"_s, u"cat x"_s, u"apt list"_s));
    select({u"zip y"_s, u"cat x"_s});
    table().sortByColumn(AlwaysAllowModel::Source, Qt::AscendingOrder);
    EXPECT_THAT(selected(), UnorderedElementsAre(u"zip y"_s, u"cat x"_s));
    // Rows come before and between them, and one of them goes.
    platformAllows(
        {u"aa one"_s, u"apt list"_s, u"bb two"_s, u"cat x"_s, u"git push"_s, u"sudo z"_s});
    ASSERT_TRUE(test::waitUntil([] { return rows().contains(u"sudo z"_s); }));
    EXPECT_THAT(selected(), ElementsAre(u"cat x"_s));
    QTest::keyClick(&table(), Qt::Key_Down, Qt::ShiftModifier);
    table().sortByColumn(AlwaysAllowModel::Warning, Qt::AscendingOrder);
    EXPECT_EQ(rows().constFirst(), u"sudo z"_s);
    select({u"cat x"_s, u"bb two"_s});

    prompts.answers = {2};
    QTest::keyClick(&table(), Qt::Key_Delete);
    ASSERT_TRUE(
        waitForEntries({u"aa one"_s, u"apt list"_s, u"git push"_s, u"own …"_s, u"sudo z"_s}));
    EXPECT_EQ(prompts.questions.constLast().title, u"Remove 2 always-allow entries"_s);
    EXPECT_EQ(selected(), QStringList());
    EXPECT_FALSE(content(platformFile).contains("cat x"));
    const auto asked = prompts.questions.size();
    QTest::keyClick(&table(), Qt::Key_Delete);
    EXPECT_EQ(prompts.questions.size(), asked) << "nothing is selected";
}

TEST_F(AlwaysAllowWindowTest, WhatASearchHidesIsNotSelected)
{
    platformAllows({u"apt list"_s, u"cat x"_s, u"e\u202Ed"_s});
    open();
    table().selectAll();
    EXPECT_EQ(selected().size(), 5);
    searchField().setText(u"list"_s);
    EXPECT_EQ(selected(), QStringList {u"apt list"_s});
    searchField().clear();
    EXPECT_EQ(selected(), QStringList {u"apt list"_s}) << "what was out of view does not come back";
    table().clearSelection();
    searchField().setText(u"cat"_s);
    prompts.answers = {0};
    push(u"Add All approval list to app list"_s);
    ASSERT_TRUE(test::waitUntil([this] { return !prompts.alerts.isEmpty(); }));
    EXPECT_TRUE(core->alwaysAllow().list().verdict(u"cat x"_s) == AlwaysAllowVerdict::Allowed);
    EXPECT_TRUE(core->alwaysAllow().list().verdict(u"apt list"_s) == AlwaysAllowVerdict::Unknown)
        << "nobody saw it";
    searchField().clear();
    struct Case {
        QString words;
        QStringList shown;
    };
    const QString digest = *normalizedCommandDigest(u"cat x"_s);
    for (const Case &search :
         {Case {u"PUSH git"_s, {}}, Case {digest.left(12).toUpper(), {u"cat x"_s}},
          Case {u" LIST apt "_s, {u"apt list"_s}}, Case {u"brackwen cat"_s, {u"cat x"_s}},
          Case {u"202e⟩"_s, {}}, Case {u"⟨u+202e⟩"_s, {u"e⟨U+202E⟩d"_s}}}) {
        searchField().setText(search.words);
        EXPECT_EQ(rows(), search.shown) << qPrintable(search.words);
        EXPECT_EQ(selected().size(), 0)
            << "of what was selected nothing is left, or it came back into view";
        EXPECT_EQ(labelTexts().contains(u"No entry matches the search."_s), search.shown.isEmpty());
        table().selectAll();
    }
    EXPECT_EQ(selected(), QStringList {u"e\u202Ed"_s});
    prompts.answers = {2};
    QTest::keyClick(&table(), Qt::Key_Delete);
    ASSERT_TRUE(waitForEntries({u"apt list"_s, u"cat x"_s, u"git …"_s, u"own …"_s}));
    QTest::keyClick(&searchField(), Qt::Key_Escape);
    EXPECT_EQ(rows().size(), 4);
    QTest::keyClick(&searchField(), Qt::Key_Escape);
    ASSERT_TRUE(test::waitUntil([] { return windows().isEmpty(); })) << "closed, and gone";
}

TEST_F(AlwaysAllowWindowTest, NoRowMovesWhileTheMouseButtonIsHeld)
{
    QStringList commands;
    for (int i = 100; i < 200; ++i) {
        commands.append(u"run %1"_s.arg(i));
    }
    platformAllows(commands);
    open();
    ASSERT_TRUE(test::waitUntil([] { return rows().size() == 102; }));
    table().verticalScrollBar()->setValue(table().verticalScrollBar()->maximum() / 2);
    const QPoint point(20, 30);
    const auto rowAtPoint
        = [&] { return table().model()->index(table().indexAt(point).row(), 0).data().toString(); };
    const QString held = rowAtPoint();
    QTest::mousePress(table().viewport(), Qt::LeftButton, {}, point);
    QStringList more = commands;
    more.prepend(u"aa first"_s);
    platformAllows(more);
    ASSERT_TRUE(
        test::waitUntil([this] { return core->alwaysAllow().list().entries().size() == 103; }));
    EXPECT_EQ(rows().size(), 102);
    EXPECT_EQ(rowAtPoint(), held);
    QTest::mouseRelease(table().viewport(), Qt::LeftButton, {}, point);
    ASSERT_TRUE(test::waitUntil([] { return rows().size() == 103; }));
    EXPECT_EQ(rowAtPoint(), held) << "the place stays where the reader is";
    EXPECT_EQ(selected(), QStringList {held});
}

TEST_F(AlwaysAllowWindowTest, HostileTextsAreShownAsTheyAre)
{
    platformAllows({}, {u"<b>rm</b> a\\u202Eb\\nsudo c"_s});
    open();
    const QString row = u"<b>rm</b> a⟨U+202E⟩b⟨U+000A⟩sudo c"_s;
    select({row});
    EXPECT_EQ(window().findChild<CommandTextView *>()->toPlainText().replace(QChar(0xa0), u' '),
              u"<b>rm</b> a⟨U+202E⟩b\nsudo c"_s);
    ASSERT_TRUE(
        test::waitUntil([] { return !labelTexts().filter(u"agent o⟨U+202E⟩b"_s).isEmpty(); }));
    EXPECT_EQ(labelTexts().filter(u"Characters that could mislead"_s).size(), 1);
    for (const auto *label : window().findChildren<QLabel *>()) {
        EXPECT_NE(label->textFormat(), Qt::RichText);
        EXPECT_FALSE(label->textFormat() == Qt::AutoText && label->text().contains(u'<'));
    }
}

TEST_F(AlwaysAllowWindowTest, FollowsTheLanguageAndSaysWhenThereIsNothing)
{
    open();
    presenter->show();
    ASSERT_EQ(windows().size(), 1) << "showing it again brings the same one to the front";
    prompts.answers = {0};
    push(u"Select approval-list deletion"_s);
    ASSERT_TRUE(waitForEntries({}));
    EXPECT_THAT(labelTexts(),
                IsSupersetOf({u"Entries (0)"_s, u"No always-allow entries registered."_s}));

    ASSERT_TRUE(core->language().choose(MenuLanguage::Korean));
    ASSERT_TRUE(test::waitUntil([] { return window().windowTitle() == u"승인 목록 관리"_s; }));
    EXPECT_THAT(labelTexts(),
                IsSupersetOf({u"항목 (0)"_s, u"등록된 영구 승인 항목이 없습니다."_s}));
    EXPECT_THAT(buttonTexts(),
                IsSupersetOf({u"최근 7일 감사 데이터 저장"_s, u"최근 7일 감사 데이터 보기"_s,
                              u"전체 승인리스트 앱 목록에 추가"_s}));
    platformAllows({u"apt list"_s});
    ASSERT_TRUE(test::waitUntil([] { return rows() == QStringList {u"apt list"_s}; }));
    select({u"apt list"_s});
    EXPECT_THAT(buttonTexts(), Contains(u"앱 로컬 목록에 추가"_s));
    ASSERT_TRUE(core->language().choose(MenuLanguage::English));
    ASSERT_TRUE(test::waitUntil([] { return buttonTexts().contains(u"Add to app local list"_s); }));
    EXPECT_EQ(selected(), QStringList {u"apt list"_s}) << "a change of language keeps the place";

    const QWidgetList everything = window().findChildren<QWidget *>();
    for (QWidget *widget : everything) {
        const bool isUsed = widget->focusPolicy() != Qt::NoFocus && widget->isVisibleTo(&window())
            && qobject_cast<QAbstractScrollArea *>(widget->parentWidget()) == nullptr;
        if (isUsed) {
            EXPECT_FALSE(
                QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name).isEmpty())
                << widget->metaObject()->className();
        }
    }
    QTest::keyClick(&window(), Qt::Key_Escape);
    ASSERT_TRUE(test::waitUntil([] { return windows().isEmpty(); }));
    presenter->show();
    EXPECT_EQ(windows().size(), 1);
}

TEST_F(AlwaysAllowWindowTest, AReportUnderWayIsSeenAndCanBeCancelled)
{
    class StuckLog final : public SystemLog
    {
    public:
        void write(QStringView) override { letGo.wait(); }
        std::latch letGo {1};
    };
    makeCore();
    StuckLog stuck;
    QFile obstacle(folder.filePath(u"file"_s));
    ASSERT_TRUE(obstacle.open(QFile::WriteOnly));
    AuditLogStore store(folder.filePath(u"file/cannot-be"_s), {}, stuck);
    store.append({.timestampMs = 1, .kind = u"stuck"_s}); // its failure gets stuck in the log
    RecordOperations operations({.monitor = monitor(),
                                 .audit = store,
                                 .clock = clock,
                                 .log = log,
                                 .dataFolder = folder.path()});
    RecordActions records({.record = operations,
                           .prompts = prompts,
                           .tasks = core->tasks(),
                           .language = core->language(),
                           .surface = [] { return SurfaceFacts(); }});
    RecordPane recordPane(records);
    recordPane.show();
    const auto button = [&](const QString &text) {
        QPushButton *found = nullptr;
        for (auto *each : recordPane.findChildren<QPushButton *>()) {
            found = each->text() == text ? each : found;
        }
        return found;
    };
    EXPECT_FALSE(button(u"Cancel"_s)->isVisible());
    button(u"View last 7 days audit data"_s)->click();
    EXPECT_TRUE(test::waitUntil([&] { return button(u"Cancel"_s)->isVisible(); }));
    button(u"Cancel"_s)->click();
    stuck.letGo.count_down();
    EXPECT_TRUE(test::waitUntil([&] { return !button(u"Cancel"_s)->isVisible(); }));
    EXPECT_TRUE(prompts.opened.isEmpty());
    ASSERT_TRUE(test::waitUntil([this] { return core->tasks().running().isEmpty(); }));
}

TEST_F(AlwaysAllowWindowTest, RequestsAreDecidedWhileADialogIsOpen)
{
    Preferences preferences(folder.filePath(u"dialogs.ini"_s));
    XdgFileOpener opener;
    DesktopPrompts dialogs(preferences, opener);
    platformAllows({u"apt list"_s});
    open(&dialogs);
    select({u"apt list"_s});
    push(u"Remove Allow"_s);
    const auto boxes = [] {
        QList<QMessageBox *> found;
        for (QWidget *widget : QApplication::topLevelWidgets()) {
            if (auto *box = qobject_cast<QMessageBox *>(widget); box && box->isVisible()) {
                found.append(box);
            }
        }
        return found;
    };
    ASSERT_TRUE(test::waitUntil([&] { return !boxes().isEmpty(); }));
    QMessageBox *box = boxes().constFirst();
    request(item("meanwhile"));
    decide("meanwhile", ApprovalDecision::Deny);
    ASSERT_TRUE(waitSettled(3));
    EXPECT_TRUE(box->isVisible());
    QTest::keyClick(box, Qt::Key_Escape);
    ASSERT_TRUE(test::waitUntil([&] { return boxes().isEmpty(); }));
    EXPECT_TRUE(content(platformFile).contains("apt list"));

    for (int i = 0; i < 3; ++i) { // by somebody who does not see it
        actions->record().copyOrSaveAllPending();
    }
    ASSERT_TRUE(test::waitUntil([&] { return !boxes().isEmpty(); }));
    const QPointer asked(boxes().constFirst());
    QTest::keyClick(asked, Qt::Key_Escape);
    ASSERT_TRUE(test::waitUntil([&] { return asked.isNull(); }));
    // Had the wish been taken more than once, it would be asked before this is told.
    bool isNext = false;
    core->tasks().spawn(
        [](DesktopPrompts *shownBy, bool *done) -> QCoro::Task<> {
            const Alert alert {u"last"_s, {}};
            co_await shownBy->inform(alert);
            *done = true;
        }(&dialogs, &isNext),
        u"test"_s);
    ASSERT_TRUE(test::waitUntil([&] { return !boxes().isEmpty(); }));
    EXPECT_EQ(boxes().constFirst()->text(), u"last"_s);
    dialogs.stop();
    EXPECT_TRUE(test::waitUntil([&] { return isNext; }));
}

} // namespace bram
