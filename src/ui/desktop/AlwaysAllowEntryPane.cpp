// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowEntryPane.h"

#include "allowlist/CommandDigest.h"
#include "model/HonestDisplay.h"
#include "monitor/ApprovalBoard.h"
#include "ui/desktop/CommandTextView.h"
#include "ui/desktop/ElidedLabel.h"
#include "ui/desktop/TrashIcon.h"
#include "ui/desktop/WarningColours.h"

#include <QBoxLayout>
#include <QClipboard>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLocale>

#include <algorithm>
#include <chrono>

namespace bram
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
constexpr auto settlingTime = 150ms;
constexpr auto answersPause = 500ms;
constexpr qsizetype mostPlaces = 5;

QString timeText(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(u"yyyy-MM-dd HH:mm:ss");
}

QString homeRelative(const QString &path)
{
    const QString home = QDir::homePath() + u'/';
    return path.startsWith(home) ? u"~/"_s + path.sliced(home.size()) : path;
}

/// The application's list keeps no argument of a command.
bool isPreviewOnly(const AlwaysAllowEntry &entry)
{
    return entry.source == AlwaysAllowSource::LocalOnly && entry.command.endsWith(u'…');
}
} // namespace

AlwaysAllowEntryPane::AlwaysAllowEntryPane(const AlwaysAllowInquiry::Collaborators &collaborators,
                                           QWidget *parent)
    : QWidget(parent)
    , m_collaborators(collaborators)
    , m_inquiry(collaborators)
    , m_summary(new QLabel(this))
    , m_warning(new QLabel(this))
    , m_command(new CommandTextView(this))
    , m_note(new QLabel(this))
    , m_factsArea(new QWidget(this))
    , m_facts(new QGridLayout(m_factsArea))
    , m_id(new ElidedLabel(m_factsArea))
    , m_places(new QLabel(m_factsArea))
    , m_lastAnswer(new QLabel(m_factsArea))
    , m_copyId(new QPushButton(this))
    , m_add(new QPushButton(this))
    , m_remove(new QPushButton(this))
{
    build();
    recolour();
    retranslate();
    m_settling.setSingleShot(true);
    m_settling.setInterval(settlingTime);
    connect(&m_settling, &QTimer::timeout, this, [this] {
        m_inquiry.ask(m_entries.size() == 1 ? m_entries.constFirst().digest : QString());
    });
    connect(&m_inquiry, &AlwaysAllowInquiry::factsChanged, this, &AlwaysAllowEntryPane::showFacts);
    m_answersPause.setSingleShot(true);
    m_answersPause.setInterval(answersPause);
    connect(&m_answersPause, &QTimer::timeout, this, &AlwaysAllowEntryPane::showFacts);
    // One may be an answer of this entry.
    connect(&collaborators.board, &ApprovalBoard::historyChanged, this, [this] {
        if (m_entries.size() == 1 && !m_answersPause.isActive()) {
            m_answersPause.start();
        }
    });
    connect(m_copyId, &QPushButton::clicked, this,
            [this] { QGuiApplication::clipboard()->setText(m_entries.constFirst().digest); });
    connect(m_add, &QPushButton::clicked, this, [this] { Q_EMIT additionRequested(addable()); });
    connect(m_remove, &QPushButton::clicked, this, [this] { Q_EMIT removalRequested(m_entries); });
}

AlwaysAllowEntryPane::~AlwaysAllowEntryPane() = default;

void AlwaysAllowEntryPane::build()
{
    for (QLabel *label : {m_summary, m_warning, m_note, m_places, m_lastAnswer}) {
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
    }
    m_summary->setAlignment(Qt::AlignCenter);
    m_places->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_facts->setContentsMargins({});
    m_facts->setVerticalSpacing(4);
    m_facts->setColumnStretch(1, 1);
    int row = 0;
    for (QLabel *fact : std::initializer_list<QLabel *> {m_id, m_places, m_lastAnswer}) {
        auto *name = new QLabel(m_factsArea);
        name->setBuddy(fact);
        m_facts->addWidget(name, row, 0, Qt::AlignTop);
        m_facts->addWidget(fact, row, 1);
        m_names.append(name);
        ++row;
    }

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_copyId);
    buttons->addStretch();
    buttons->addWidget(m_add);
    buttons->addWidget(m_remove);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(m_summary, 1);
    layout->addWidget(m_warning);
    layout->addWidget(m_command, 1);
    layout->addWidget(m_note);
    layout->addWidget(m_factsArea);
    layout->addLayout(buttons);
    setMinimumWidth(220);
}

void AlwaysAllowEntryPane::setSelected(const QList<AlwaysAllowEntry> &entries)
{
    if (entries == m_entries) {
        m_settling.start(); // the files may have changed all the same
        return;
    }
    m_entries = entries;
    m_inquiry.ask({});
    m_settling.start();
    showSelected();
}

void AlwaysAllowEntryPane::setOperable(bool operable)
{
    m_isOperable = operable;
    showButtons();
}

void AlwaysAllowEntryPane::showSelected()
{
    const bool isOne = m_entries.size() == 1;
    m_summary->setVisible(!isOne);
    m_command->setVisible(isOne);
    m_factsArea->setVisible(isOne);
    m_copyId->setVisible(isOne);
    if (isOne) {
        showEntry(m_entries.constFirst());
    } else {
        showSeveral();
    }
    showButtons();
}

void AlwaysAllowEntryPane::showEntry(const AlwaysAllowEntry &entry)
{
    m_command->setVisible(!entry.command.isEmpty());
    m_command->setCommand(entry.command);
    QStringList warnings;
    if (entry.isSecuritySensitive) {
        warnings.append(
            tr("Security Critical: this lets commands that can change the system run without a "
               "question."));
    }
    if (m_command->isSuspicious()) {
        warnings.append(tr("Characters that could mislead are shown as ⟨…⟩."));
    }
    m_warning->setText(warnings.join(u'\n'));
    m_warning->setVisible(!warnings.isEmpty());

    const QString note = noteOn(entry);
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
    m_id->setWholeText(entry.digest);
    showFacts();
}

QString AlwaysAllowEntryPane::noteOn(const AlwaysAllowEntry &entry) const
{
    if (entry.source == AlwaysAllowSource::BrackwenOnly) {
        return tr("Not in the app list: a request for this command is shown to you.");
    }
    if (entry.isAskedOnceMore()) {
        return tr("Answers nothing yet: how exactly the command is written is not known. A request "
                  "for it is "
                  "shown to you once more; Always Allow then takes it in.");
    }
    if (entry.command.isEmpty()) {
        return tr("(Legacy entry: command unavailable)");
    }
    QStringList notes;
    if (isPreviewOnly(entry)) {
        notes.append(tr("The app list keeps the name of the program only. The entry stands for one "
                        "command, which its ID is made of."));
    }
    if (!entry.forms.contains(plainCommandForm)) {
        notes.append(tr(
            "Answers only for exactly the text that was allowed, with its blanks, quotes and line "
            "breaks."));
    }
    return notes.join(u'\n');
}

void AlwaysAllowEntryPane::showSeveral()
{
    m_warning->hide();
    m_note->hide();
    m_command->setCommand({});
    if (m_entries.isEmpty()) {
        m_summary->setText(tr("Select an entry to read it whole."));
        return;
    }
    const auto count = [this](auto matches) {
        return QLocale().toString(std::ranges::count_if(m_entries, matches));
    };
    const auto in = [&](AlwaysAllowSource source) {
        return count([source](const AlwaysAllowEntry &entry) { return entry.source == source; });
    };
    m_summary->setText(
        tr("%1 entries selected").arg(QLocale().toString(m_entries.size())) + u"\n\n"_s
        + tr("In the app list only: %1\nIn the Brackwen list only: %2\nIn both: %3\nSecurity "
             "Critical: %4")
              .arg(in(AlwaysAllowSource::LocalOnly), in(AlwaysAllowSource::BrackwenOnly),
                   in(AlwaysAllowSource::Both), count(&AlwaysAllowEntry::isSecuritySensitive)));
}

void AlwaysAllowEntryPane::showFacts()
{
    if (m_entries.size() != 1) {
        return;
    }
    m_places->setText(placesText(m_entries.constFirst()));
    m_lastAnswer->setText(lastAnswerText());
}

QString AlwaysAllowEntryPane::placesText(const AlwaysAllowEntry &entry) const
{
    QStringList lines;
    if (entry.source != AlwaysAllowSource::BrackwenOnly) {
        lines.append(tr("App list"));
    }
    const auto places = m_inquiry.facts().places;
    if (!places) {
        if (entry.source != AlwaysAllowSource::LocalOnly) {
            lines.append(tr("Brackwen list: looking it up…"));
        }
        return lines.join(u'\n');
    }
    for (const ExecApprovalsPlace &place : places->first(std::min(mostPlaces, places->size()))) {
        lines.append(
            tr("%1, agent %2")
                .arg(honestLine(homeRelative(place.path)).text, honestLine(place.agentId).text));
    }
    if (places->size() > mostPlaces) {
        lines.append(tr("and %1 more").arg(places->size() - mostPlaces));
    }
    return lines.join(u'\n');
}

QString AlwaysAllowEntryPane::lastAnswerText() const
{
    const auto facts = m_inquiry.facts();
    if (facts.lastAnswerMs) {
        return timeText(*facts.lastAnswerMs);
    }
    if (!facts.isLogRead) {
        return tr("looking it up…");
    }
    return facts.logSinceMs
        ? tr("none on record (the log goes back to %1)").arg(timeText(*facts.logSinceMs))
        : tr("none on record");
}

QList<AlwaysAllowEntry> AlwaysAllowEntryPane::addable() const
{
    QList<AlwaysAllowEntry> entries;
    std::ranges::copy_if(m_entries, std::back_inserter(entries), [](const AlwaysAllowEntry &entry) {
        return entry.source == AlwaysAllowSource::BrackwenOnly;
    });
    return entries;
}

void AlwaysAllowEntryPane::showButtons()
{
    const auto addableCount = addable().size();
    const auto withCount = [](const QString &text, qsizetype count) {
        return count > 1 ? u"%1 (%2)"_s.arg(text, QLocale().toString(count)) : text;
    };
    m_add->setText(withCount(tr("Add to app local list"), addableCount));
    m_add->setVisible(addableCount > 0);
    m_add->setEnabled(m_isOperable);
    m_remove->setText(withCount(tr("Remove Allow"), m_entries.size()));
    m_remove->setVisible(!m_entries.isEmpty());
    m_remove->setEnabled(m_isOperable);
}

void AlwaysAllowEntryPane::retranslate()
{
    m_copyId->setText(tr("Copy ID"));
    m_names[0]->setText(tr("ID:"));
    m_names[1]->setText(tr("Registered in:"));
    m_names[2]->setText(tr("Last automatic answer:"));
    showSelected();
}

void AlwaysAllowEntryPane::recolour()
{
    QPalette warning = palette();
    warning.setColor(QPalette::WindowText, warningColour(palette()));
    m_warning->setPalette(warning);
    QFont bold = font();
    bold.setBold(true);
    m_warning->setFont(bold);
    m_remove->setIcon(trashIcon(palette()));
}

void AlwaysAllowEntryPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    } else if (event->type() == QEvent::PaletteChange) {
        recolour();
    }
}

} // namespace bram
