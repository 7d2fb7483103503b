// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/HistoryModel.h"

#include "ui/desktop/MenuText.h"
#include "ui/language/Words.h"

namespace bram
{

void HistoryModel::setEntries(const QList<ApprovalHistoryEntry> &entries)
{
    if (entries == m_entries) {
        return;
    }
    beginResetModel();
    m_entries = entries;
    endResetModel();
}

void HistoryModel::retranslate()
{
    if (!m_entries.isEmpty()) {
        Q_EMIT dataChanged(index(0, State), index(static_cast<int>(m_entries.size()) - 1, Command));
    }
    Q_EMIT headerDataChanged(Qt::Horizontal, State, Command);
}

int HistoryModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_entries.size());
}

int HistoryModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant HistoryModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_entries.size() || role != Qt::DisplayRole) {
        return {};
    }
    const ApprovalHistoryEntry &entry = m_entries.at(index.row());
    switch (index.column()) {
    case State:
        return historyStateWord(entry.state, entry.maker);
    case Time:
        return entry.timestampText();
    case Command:
        return shortenedCommand(entry.command);
    default:
        return {};
    }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) {
        return {};
    }
    switch (section) {
    case State:
        return tr("State");
    case Time:
        return tr("Time");
    case Command:
        return tr("Command");
    default:
        return {};
    }
}

} // namespace bram
