// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowListPane.h"

#include "system/NextTurn.h"
#include "ui/desktop/Chip.h"
#include "ui/desktop/CommandCell.h"
#include "ui/language/Words.h"

#include <QBoxLayout>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QScrollBar>
#include <QTableView>

#include <algorithm>
#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr int searchWidth = 260;

QString number(qsizetype count)
{
    return QLocale().toString(count);
}
} // namespace

AlwaysAllowListPane::AlwaysAllowListPane(QWidget *parent)
    : QWidget(parent)
    , m_filter(m_model)
    , m_title(new QLabel(this))
    , m_search(new QLineEdit(this))
    , m_table(new QTableView(this))
    , m_empty(new QWidget(this))
    , m_emptyText(new QLabel(m_empty))
    , m_emptyHint(new QLabel(m_empty))
    , m_clearSearch(new QPushButton(m_empty))
    , m_stack(new QStackedLayout)
{
    setFocusProxy(m_table);
    build();
    fitRows();
    retranslate();
    connect(m_search, &QLineEdit::textChanged, this, &AlwaysAllowListPane::search);
    connect(m_clearSearch, &QPushButton::clicked, m_search, &QLineEdit::clear);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &AlwaysAllowListPane::selectionChanged);
    m_table->installEventFilter(this);
    m_table->viewport()->installEventFilter(this);
    m_search->installEventFilter(this);
}

AlwaysAllowListPane::~AlwaysAllowListPane() = default;

void AlwaysAllowListPane::build()
{
    QFont bold = m_title->font();
    bold.setBold(true);
    m_title->setFont(bold);
    m_title->setBuddy(m_table);
    m_search->setClearButtonEnabled(true);
    m_search->setMinimumWidth(searchWidth / 2);
    m_search->setMaximumWidth(searchWidth);

    m_table->setModel(&m_filter);
    m_table->setItemDelegateForColumn(AlwaysAllowModel::Command, new CommandCell(m_table));
    m_table->setItemDelegateForColumn(AlwaysAllowModel::Source, new ChipDelegate(m_table));
    m_table->setItemDelegateForColumn(AlwaysAllowModel::Warning, new ChipDelegate(m_table));
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setShowGrid(false);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->setSortingEnabled(true);
    m_table->sortByColumn(AlwaysAllowModel::Command, Qt::AscendingOrder);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    QHeaderView *header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionResizeMode(AlwaysAllowModel::Command, QHeaderView::Stretch);

    for (QLabel *label : {m_emptyText, m_emptyHint}) {
        label->setTextFormat(Qt::PlainText);
        label->setAlignment(Qt::AlignHCenter);
        label->setWordWrap(true);
    }
    m_empty->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored); // the table says how large
    m_emptyText->setFont(bold);
    auto *middle = new QVBoxLayout(m_empty);
    middle->addStretch(2);
    middle->addWidget(m_emptyText);
    middle->addWidget(m_emptyHint);
    middle->addWidget(m_clearSearch, 0, Qt::AlignHCenter);
    middle->addStretch(3);
    m_stack->addWidget(m_table);
    m_stack->addWidget(m_empty);

    auto *top = new QHBoxLayout;
    top->addWidget(m_title);
    top->addStretch();
    top->addWidget(m_search, 1);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addLayout(top);
    layout->addLayout(m_stack, 1);
}

void AlwaysAllowListPane::setEntries(const QList<AlwaysAllowEntry> &entries)
{
    if (m_held) {
        m_held = entries;
    } else {
        show(entries);
    }
}

void AlwaysAllowListPane::show(const QList<AlwaysAllowEntry> &entries)
{
    const Place before = place();
    {
        const QSignalBlocker quiet(m_table->selectionModel());
        m_model.setEntries(entries);
        restore(before);
    }
    m_table->viewport()->update();
    showCount();
    Q_EMIT selectionChanged();
}

AlwaysAllowListPane::Place AlwaysAllowListPane::place() const
{
    Place now;
    for (const AlwaysAllowEntry &entry : selected()) {
        now.selected.insert(entry.digest);
    }
    if (const QModelIndex current = m_table->currentIndex(); current.isValid()) {
        now.current = m_filter.entry(current.row()).digest;
        now.currentRow = current.row();
    }
    if (const int top = m_table->rowAt(0); top >= 0 && m_table->verticalScrollBar()->value() > 0) {
        now.top = m_filter.entry(top).digest;
        now.topOffset = -m_table->rowViewportPosition(top);
    }
    return now;
}

void AlwaysAllowListPane::restore(const Place &place)
{
    const int count = m_filter.rowCount();
    QItemSelection selection;
    int runStart = -1;
    int current = -1;
    int top = -1;
    for (int row = 0; row <= count; ++row) {
        const bool isSelected = row < count && place.selected.contains(m_filter.entry(row).digest);
        if (isSelected && runStart < 0) {
            runStart = row;
        } else if (!isSelected && runStart >= 0) {
            selection.select(m_filter.index(runStart, 0),
                             m_filter.index(row - 1, AlwaysAllowModel::ColumnCount - 1));
            runStart = -1;
        }
        if (row < count) {
            current = m_filter.entry(row).digest == place.current ? row : current;
            top = m_filter.entry(row).digest == place.top ? row : top;
        }
    }
    auto *selectionModel = m_table->selectionModel();
    selectionModel->select(selection, QItemSelectionModel::ClearAndSelect);
    // An entry that has gone leaves the keyboard where it was, with nothing selected there.
    const int near = current >= 0 ? current : std::min(place.currentRow, count - 1);
    if (near >= 0) {
        selectionModel->setCurrentIndex(m_filter.index(near, 0), QItemSelectionModel::NoUpdate);
    }
    if (top >= 0) {
        const int rowHeight = m_table->verticalHeader()->defaultSectionSize();
        m_table->verticalScrollBar()->setValue(top * rowHeight + place.topOffset);
    }
}

QList<AlwaysAllowEntry> AlwaysAllowListPane::selected() const
{
    QList<int> rows;
    for (const QItemSelectionRange &range : m_table->selectionModel()->selection()) {
        for (int row = range.top(); row <= range.bottom(); ++row) {
            rows.append(row);
        }
    }
    std::ranges::sort(rows);
    const auto repeats = std::ranges::unique(rows);
    rows.erase(repeats.begin(), repeats.end());
    QList<AlwaysAllowEntry> entries;
    entries.reserve(rows.size());
    for (const int row : std::as_const(rows)) {
        entries.append(m_filter.entry(row));
    }
    return entries;
}

QList<AlwaysAllowEntry> AlwaysAllowListPane::shown() const
{
    QList<AlwaysAllowEntry> entries;
    entries.reserve(m_filter.rowCount());
    for (int row = 0; row < m_filter.rowCount(); ++row) {
        entries.append(m_filter.entry(row));
    }
    return entries;
}

void AlwaysAllowListPane::search(const QString &words)
{
    const Place before = place();
    {
        const QSignalBlocker quiet(m_table->selectionModel());
        m_filter.setSearch(words);
        restore(before);
    }
    m_table->viewport()->update();
    showCount();
    Q_EMIT selectionChanged();
}

void AlwaysAllowListPane::showCount()
{
    const auto all = m_model.entries().size();
    const auto shown = m_filter.rowCount();
    m_title->setText(m_filter.isSearching()
                         ? tr("Entries (%1 of %2)").arg(number(shown), number(all))
                         : tr("Entries (%1)").arg(number(all)));
    const bool isNoneFound = shown == 0 && all > 0;
    m_stack->setCurrentWidget(shown == 0 ? m_empty : m_table);
    m_clearSearch->setVisible(isNoneFound);
    m_emptyText->setText(isNoneFound ? tr("No entry matches the search.")
                                     : tr("No always-allow entries registered."));
    m_emptyHint->setText(isNoneFound
                             ? tr("The search looks at commands, IDs and lists.")
                             : tr("A command that you answer with \"Always Allow\" is listed here. "
                                  "\"Load approval list\" brings in what is registered in "
                                  "Brackwen, \"Restore backed-up approval list\" what was saved."));
}

void AlwaysAllowListPane::retranslate()
{
    m_search->setPlaceholderText(tr("Search commands, IDs, lists"));
    m_search->setAccessibleName(tr("Search the entries"));
    m_table->setAccessibleName(tr("Entries"));
    m_clearSearch->setText(tr("Clear Search"));
    m_model.retranslate();
    showCount();
    fitRows();
}

void AlwaysAllowListPane::fitRows()
{
    constexpr int headingMargin = 36; // with the sign of the order
    constexpr int cellMargin = 14;
    m_table->verticalHeader()->setDefaultSectionSize(CommandCell::heightFor(m_table->font()));
    int source = m_table->fontMetrics().horizontalAdvance(
                     m_model.headerData(AlwaysAllowModel::Source, Qt::Horizontal, Qt::DisplayRole)
                         .toString())
        + headingMargin;
    for (const auto word :
         {AlwaysAllowSource::LocalOnly, AlwaysAllowSource::BrackwenOnly, AlwaysAllowSource::Both}) {
        source = std::max(
            source, chipSize(alwaysAllowSourceWord(word), m_table->font()).width() + cellMargin);
    }
    const int warning
        = chipSize(AlwaysAllowModel::tr("Security Critical"), m_table->font()).width() + cellMargin;
    m_table->setColumnWidth(AlwaysAllowModel::Source, source);
    m_table->setColumnWidth(AlwaysAllowModel::Warning, warning);
}

void AlwaysAllowListPane::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

void AlwaysAllowListPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    } else if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        fitRows();
    }
}

bool AlwaysAllowListPane::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        return keyPressed(watched, static_cast<QKeyEvent *>(event)->key());
    }
    if (watched == m_table->viewport()) {
        if (event->type() == QEvent::MouseButtonPress && !m_held) {
            m_held = m_model.entries();
        } else if (event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::Hide) {
            // When the click has had its effect.
            inNextTurn(this, [this] {
                if (const auto held = std::exchange(m_held, std::nullopt);
                    held && *held != m_model.entries()) {
                    show(*held);
                }
            });
        }
    }
    return false;
}

bool AlwaysAllowListPane::keyPressed(QObject *watched, int key)
{
    if (key == Qt::Key_Escape && watched == m_search && !m_search->text().isEmpty()) {
        m_search->clear();
        return true;
    }
    if (key == Qt::Key_Escape) {
        Q_EMIT closeRequested();
        return true;
    }
    if (watched == m_search && (key == Qt::Key_Down || key == Qt::Key_Return)) {
        m_table->setFocus(Qt::TabFocusReason);
        return true;
    }
    if (watched == m_table && key == Qt::Key_Delete) {
        Q_EMIT removalRequested();
        return true;
    }
    return false;
}

} // namespace bram
