// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowModel.h"

#include "model/HonestDisplay.h"
#include "ui/desktop/Chip.h"
#include "ui/language/Words.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// More of a command never fits on a row.
constexpr qsizetype mostLookedAt = 500;

QString rowText(const QString &command)
{
    const QString shown = honestLine(command.first(std::min(mostLookedAt, command.size()))).text;
    return command.size() > mostLookedAt ? shown + u'…' : shown;
}

bool hasWord(const AlwaysAllowEntry &entry, const QString &word)
{
    return entry.command.contains(word, Qt::CaseInsensitive)
        || entry.digest.contains(word, Qt::CaseInsensitive)
        || alwaysAllowSourceWord(entry.source).contains(word, Qt::CaseInsensitive)
        // A mark is typed as it is read.
        || (word.contains(u'⟨')
            && honestLine(entry.command).text.contains(word, Qt::CaseInsensitive));
}
} // namespace

void AlwaysAllowModel::setEntries(const QList<AlwaysAllowEntry> &entries)
{
    beginResetModel();
    m_entries = entries;
    endResetModel();
}

void AlwaysAllowModel::retranslate()
{
    if (!m_entries.isEmpty()) {
        Q_EMIT dataChanged(index(0, Command),
                           index(static_cast<int>(m_entries.size()) - 1, Warning));
    }
    Q_EMIT headerDataChanged(Qt::Horizontal, Command, Warning);
}

int AlwaysAllowModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int AlwaysAllowModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant AlwaysAllowModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size()) {
        return {};
    }
    const AlwaysAllowEntry &entry = m_entries.at(index.row());
    switch (index.column()) {
    case Command:
        return commandData(entry, role);
    case Source:
        if (role == ChipDelegate::toneRole) {
            return static_cast<int>(
                entry.source == AlwaysAllowSource::LocalOnly ? ChipTone::Plain : ChipTone::Accent);
        }
        return role == Qt::DisplayRole ? alwaysAllowSourceWord(entry.source) : QVariant();
    case Warning:
        if (role == ChipDelegate::toneRole) {
            return static_cast<int>(ChipTone::Warning);
        }
        return role == Qt::DisplayRole && entry.isSecuritySensitive ? tr("Security Critical")
                                                                    : QVariant();
    default:
        return {};
    }
}

QVariant AlwaysAllowModel::commandData(const AlwaysAllowEntry &entry, int role) const
{
    const auto text = [&] {
        return entry.command.isEmpty() ? tr("(Legacy entry: command unavailable)")
                                       : rowText(entry.command);
    };
    switch (role) {
    case Qt::DisplayRole:
        return text();
    case idRole:
        return tr("ID: %1").arg(entry.digest);
    case Qt::AccessibleTextRole:
        return text() + u", "_s + tr("ID: %1").arg(entry.digest);
    default:
        return {};
    }
}

QVariant AlwaysAllowModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case Command:
        return tr("Command");
    case Source:
        return tr("List");
    case Warning:
        return tr("Warning");
    default:
        return {};
    }
}

AlwaysAllowFilter::AlwaysAllowFilter(AlwaysAllowModel &model, QObject *parent)
    : QSortFilterProxyModel(parent)
    , m_model(model)
{
    setSourceModel(&model);
}

void AlwaysAllowFilter::setSearch(const QString &words)
{
    m_words = words.simplified().split(u' ', Qt::SkipEmptyParts);
    invalidateFilter();
}

const AlwaysAllowEntry &AlwaysAllowFilter::entry(int row) const
{
    return m_model.entries().at(mapToSource(index(row, 0)).row());
}

bool AlwaysAllowFilter::filterAcceptsRow(int sourceRow,
                                         [[maybe_unused]] const QModelIndex &sourceParent) const
{
    const AlwaysAllowEntry &entry = m_model.entries().at(sourceRow);
    return std::ranges::all_of(m_words, [&](const QString &word) { return hasWord(entry, word); });
}

/// The rows come in the order of their texts, which decides where a column does not.
bool AlwaysAllowFilter::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const AlwaysAllowEntry &a = m_model.entries().at(left.row());
    const AlwaysAllowEntry &b = m_model.entries().at(right.row());
    if (left.column() == AlwaysAllowModel::Source && a.source != b.source) {
        return a.source < b.source;
    }
    if (left.column() == AlwaysAllowModel::Warning
        && a.isSecuritySensitive != b.isSecuritySensitive) {
        return a.isSecuritySensitive;
    }
    return left.row() < right.row();
}

} // namespace bram
