// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalHistoryEntry.h"

#include <QAbstractTableModel>
#include <QList>

namespace bram
{

/// The history as the rows of a table view, newest first.
class HistoryModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        State,
        Time,
        Command,
        ColumnCount,
    };

    using QAbstractTableModel::QAbstractTableModel;

    const QList<ApprovalHistoryEntry> &entries() const { return m_entries; }
    void setEntries(const QList<ApprovalHistoryEntry> &entries);
    /// Words and headings have changed with the language.
    void retranslate();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QList<ApprovalHistoryEntry> m_entries;
};

} // namespace bram
