// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ActivityModel.h"

#include "model/HonestDisplay.h"
#include "ui/desktop/Chip.h"
#include "ui/language/Words.h"

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

void ActivityModel::setEntries(const QList<ActivityEntry> &entries)
{
    if (entries == m_entries) {
        return;
    }
    const auto known = m_entries.isEmpty()
        ? entries.end()
        : std::ranges::find(entries, m_entries.constFirst().id, &ActivityEntry::id);
    if (known == entries.end()) {
        beginResetModel();
        m_entries = entries;
        endResetModel();
        return;
    }
    const auto added = static_cast<int>(known - entries.begin());
    const auto kept = static_cast<int>(entries.size()) - added;
    if (kept < m_entries.size()) {
        beginRemoveRows({}, kept, static_cast<int>(m_entries.size()) - 1);
        m_entries.resize(kept);
        endRemoveRows();
    }
    if (added > 0) {
        beginInsertRows({}, 0, added - 1);
        m_entries = entries;
        endInsertRows();
    }
}

void ActivityModel::retranslate()
{
    if (!m_entries.isEmpty()) {
        Q_EMIT dataChanged(index(0, Time), index(static_cast<int>(m_entries.size()) - 1, Detail));
    }
    Q_EMIT headerDataChanged(Qt::Horizontal, Time, Detail);
}

int ActivityModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int ActivityModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant ActivityModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size()) {
        return {};
    }
    const ActivityEntry &entry = m_entries.at(index.row());
    if (role == ChipDelegate::toneRole) {
        return static_cast<int>(entry.actor == ActivityActor::App ? ChipTone::Plain
                                                                  : ChipTone::Accent);
    }
    if (role != Qt::DisplayRole) {
        return {};
    }
    switch (index.column()) {
    case Time:
        return entry.createdAt.toLocalTime().toString(u"HH:mm:ss");
    case Actor:
        return activityActorWord(entry.actor);
    case Action:
        return activityActionWord(entry.action);
    case Detail:
        return honestLine(entry.detail).text;
    default:
        return {};
    }
}

QVariant ActivityModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case Time:
        return tr("Time");
    case Actor:
        return tr("List");
    case Action:
        return tr("Action");
    case Detail:
        return tr("Detail");
    default:
        return {};
    }
}

} // namespace bram
