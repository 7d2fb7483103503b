// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowWindow.h"

#include "monitor/AlwaysAllowOperations.h"
#include "system/BackgroundTasks.h"
#include "ui/desktop/ActivityPane.h"
#include "ui/desktop/AlwaysAllowEntryPane.h"
#include "ui/desktop/AlwaysAllowListPane.h"
#include "ui/desktop/BringToFront.h"
#include "ui/desktop/RecordActions.h"
#include "ui/desktop/RecordPane.h"
#include "ui/desktop/ScrolledContent.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QShortcut>
#include <QSplitter>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QSize usualSize(940, 740);
constexpr int listWidth = 560;
constexpr QSize smallestSize(360, 200);
constexpr QSize smallestContent(380, 520);
constexpr int roomForTwo = 700; ///< from this width on
} // namespace

AlwaysAllowWindow::AlwaysAllowWindow(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_record(new RecordPane(collaborators.record, this))
    , m_actions(new AlwaysAllowListActions(this))
    , m_list(new AlwaysAllowListPane(this))
    , m_entry(new AlwaysAllowEntryPane({.list = collaborators.operations.list(),
                                        .board = collaborators.board,
                                        .audit = collaborators.audit,
                                        .tasks = collaborators.tasks,
                                        .clock = collaborators.clock,
                                        .log = collaborators.log},
                                       this))
    , m_activity(new ActivityPane(collaborators.board, this))
    , m_entries(new QSplitter(Qt::Horizontal, this))
{
    setAttribute(Qt::WA_QuitOnClose, false);
    build();
    followWishes();
    setWindowTitle(tr("Approval List Manager"));
    showEntries();
    m_list->setFocus();
}

AlwaysAllowWindow::~AlwaysAllowWindow() = default;

void AlwaysAllowWindow::build()
{
    m_entries->setChildrenCollapsible(false);
    m_entries->addWidget(m_list);
    m_entries->addWidget(m_entry);
    m_entries->setStretchFactor(0, 3);
    m_entries->setStretchFactor(1, 2);
    m_entries->setSizes({listWidth, usualSize.width() - listWidth});
    m_entries->setHandleWidth(12);
    auto *rows = new QSplitter(Qt::Vertical, this);
    rows->setChildrenCollapsible(false);
    rows->addWidget(m_entries);
    rows->addWidget(m_activity);
    rows->setStretchFactor(0, 3);
    rows->setStretchFactor(1, 1);
    rows->setHandleWidth(12);

    auto *content = new QWidget(this);
    content->setMinimumSize(smallestContent);
    auto *column = new QVBoxLayout(content);
    column->addWidget(m_record);
    column->addWidget(m_actions);
    column->addWidget(rows, 1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(new ScrolledContent(content, this)); // for a very small screen
    setMinimumSize(smallestSize);
    resizeWithinScreen(*this, usualSize);
}

void AlwaysAllowWindow::followWishes()
{
    const AlwaysAllowList &list = m_collaborators.operations.list();
    connect(&list, &AlwaysAllowList::entriesChanged, this, &AlwaysAllowWindow::showEntries);
    connect(m_list, &AlwaysAllowListPane::selectionChanged, this,
            [this] { m_entry->setSelected(m_list->selected()); });
    connect(m_list, &AlwaysAllowListPane::closeRequested, this, &QWidget::close);
    connect(m_actions, &AlwaysAllowListActions::requested, this,
            [this](AlwaysAllowListActions::Action action) { carryOut(action); });
    const auto remove = [this](const QList<AlwaysAllowEntry> &entries) {
        if (m_isOperable && !entries.isEmpty()) {
            start(m_collaborators.operations.promptAndRemoveAlwaysAllowEntry(
                m_collaborators.prompts, entries));
        }
    };
    connect(m_entry, &AlwaysAllowEntryPane::removalRequested, this, remove);
    connect(m_list, &AlwaysAllowListPane::removalRequested, this,
            [this, remove] { remove(m_list->selected()); });
    connect(m_entry, &AlwaysAllowEntryPane::additionRequested, this,
            [this](const QList<AlwaysAllowEntry> &entries) {
                start(m_collaborators.operations.promptAndAdd(m_collaborators.prompts, entries));
            });
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, m_list,
            &AlwaysAllowListPane::focusSearch);
}

void AlwaysAllowWindow::showEntries()
{
    const auto &entries = m_collaborators.operations.list().entries();
    m_list->setEntries(entries);
    m_entry->setVisible(!entries.isEmpty());
}

void AlwaysAllowWindow::carryOut(AlwaysAllowListActions::Action action)
{
    AlwaysAllowOperations &operations = m_collaborators.operations;
    OperatorPrompts &prompts = m_collaborators.prompts;
    switch (action) {
    case AlwaysAllowListActions::Load:
        start(operations.promptAndReloadAlwaysAllowEntries(prompts));
        return;
    case AlwaysAllowListActions::Register:
        start(operations.registerCurrentAlwaysAllowEntriesToBrackwen(prompts));
        return;
    case AlwaysAllowListActions::AddAll:
        start(operations.addAllToAppList(prompts, m_list->shown()));
        return;
    case AlwaysAllowListActions::Backup:
        start(operations.backupAlwaysAllowEntries(prompts));
        return;
    case AlwaysAllowListActions::Restore:
        start(operations.restoreAlwaysAllowEntriesFromBackup(prompts));
        return;
    case AlwaysAllowListActions::Clear:
        start(operations.promptAndClearAlwaysAllowEntries(prompts));
        return;
    case AlwaysAllowListActions::ActionCount:
        return;
    }
}

template<typename Result>
void AlwaysAllowWindow::start(QCoro::Task<Result> operation)
{
    m_focusBefore = focusWidget();
    setOperable(false);
    m_focusMeanwhile = focusWidget();
    m_collaborators.tasks.spawn(awaiting(Self(this), std::move(operation)), u"list manager"_s);
}

template<typename Result>
QCoro::Task<> AlwaysAllowWindow::awaiting(Self self, QCoro::Task<Result> operation)
{
    co_await std::move(operation);
    if (self) {
        self->setOperable(true);
        if (self->m_focusBefore && self->focusWidget() == self->m_focusMeanwhile) {
            self->m_focusBefore->setFocus();
        }
    }
}

void AlwaysAllowWindow::setOperable(bool operable)
{
    m_isOperable = operable;
    m_actions->setEnabled(operable);
    m_entry->setOperable(operable);
}

void AlwaysAllowWindow::retranslate()
{
    setWindowTitle(tr("Approval List Manager"));
    m_record->retranslate();
    m_actions->retranslate();
    m_list->retranslate();
    m_entry->retranslate();
    m_activity->retranslate();
}

void AlwaysAllowWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        setWindowTitle(tr("Approval List Manager")); // the parts follow by themselves
    }
}

void AlwaysAllowWindow::closeEvent(QCloseEvent *event)
{
    QWidget::closeEvent(event);
    Q_EMIT closed();
}

void AlwaysAllowWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Cancel)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void AlwaysAllowWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_entries->setOrientation(width() >= roomForTwo ? Qt::Horizontal : Qt::Vertical);
}

} // namespace bram
