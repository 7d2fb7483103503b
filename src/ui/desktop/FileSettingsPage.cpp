// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/FileSettingsPage.h"

#include "model/HonestDisplay.h"
#include "system/BackgroundTasks.h"
#include "system/FileOpener.h"

#include <QFileInfo>
#include <QFormLayout>
#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
QString placeName(FilePlace::Kind kind)
{
    using Kind = FilePlace::Kind;
    switch (kind) {
    case Kind::Preferences:
        return FileSettingsPage::tr("Preferences");
    case Kind::Data:
        return FileSettingsPage::tr("Audit log and reports");
    case Kind::Configuration:
        return FileSettingsPage::tr("Platform configuration");
    case Kind::ExecApprovals:
        return FileSettingsPage::tr("Platform's always-allow lists");
    case Kind::Lock:
        return FileSettingsPage::tr("Lock of the running copy");
    }
    Q_UNREACHABLE();
}

/// Of the program's own files, the folder: there is nothing in them for a person to change.
QString pathToOpen(const FilePlace &place)
{
    const bool isOwnFile
        = place.kind == FilePlace::Kind::Preferences || place.kind == FilePlace::Kind::Lock;
    return isOwnFile ? QFileInfo(place.path).absolutePath() : place.path;
}

/// To be read, selected and copied; a long path can be moved through.
QLineEdit *makePathField(QWidget *parent)
{
    auto *field = new QLineEdit(parent);
    field->setReadOnly(true);
    field->setFrame(false);
    QPalette colours = field->palette();
    colours.setBrush(QPalette::Base, Qt::transparent);
    field->setPalette(colours);
    return field;
}
} // namespace

FileSettingsPage::FileSettingsPage(const Collaborators &collaborators)
    : m_collaborators(collaborators)
    , m_grid(new QGridLayout)
{
    m_grid->setHorizontalSpacing(12);
    m_grid->setVerticalSpacing(8);
    m_grid->setColumnStretch(1, 1);
    form()->addRow(m_grid);
    m_problem = addNote(NotePlace::WholeRow);
    m_meaning = addNote(NotePlace::WholeRow);
    setNote(m_problem, {});
    retranslate();
}

QString FileSettingsPage::title() const
{
    return tr("&Files");
}

void FileSettingsPage::refresh()
{
    const QList<FilePlace> places = m_collaborators.places();
    if (!std::ranges::equal(places, m_rows, {}, {}, &Row::place)) {
        makeRows(places);
    }
    for (const Row &row : m_rows) {
        labelRow(row);
    }
}

void FileSettingsPage::makeRows(const QList<FilePlace> &places)
{
    for (const Row &row : m_rows) {
        delete row.name;
        delete row.path;
        delete row.open;
    }
    m_rows.clear();
    for (const FilePlace &place : places) {
        const Row row {.place = place,
                       .name = new QLabel(this),
                       .path = makePathField(this),
                       .open = new QPushButton(this)};
        row.open->setAutoDefault(false);
        connect(row.open, &QPushButton::clicked, this, [this, place] { open(place); });
        const int line = static_cast<int>(m_rows.size());
        m_grid->addWidget(row.name, line, 0);
        m_grid->addWidget(row.path, line, 1);
        m_grid->addWidget(row.open, line, 2);
        m_rows.push_back(row);
    }
}

void FileSettingsPage::labelRow(const Row &row) const
{
    const QString name = placeName(row.place.kind);
    row.name->setText(tr("%1:").arg(name));
    row.path->setText(honestLine(row.place.path).text);
    row.path->setCursorPosition(0);
    row.path->setAccessibleName(name);
    const QString opened = pathToOpen(row.place);
    const bool isThere = QFileInfo::exists(opened);
    row.open->setEnabled(isThere);
    row.open->setText(!isThere                        ? tr("Not There Yet")
                          : QFileInfo(opened).isDir() ? tr("Open Folder")
                                                      : tr("Open"));
    row.open->setAccessibleName(u"%1: %2"_s.arg(row.open->text(), name));
}

void FileSettingsPage::open(const FilePlace &place)
{
    m_collaborators.tasks.spawn(opening(this, pathToOpen(place)), u"opening a file"_s);
}

QCoro::Task<> FileSettingsPage::opening(QPointer<FileSettingsPage> self, QString path)
{
    self->setNote(self->m_problem, {});
    const FileOpened opened = co_await self->m_collaborators.opener.open(path);
    if (self && !opened) {
        self->setNote(self->m_problem, honestLine(opened.error().message).text);
    }
}

void FileSettingsPage::retranslate()
{
    setNote(
        m_meaning,
        tr("The preferences are written by BRAM while it runs: change them here and in the menu, "
           "not in the file."));
    refresh();
}

} // namespace bram
