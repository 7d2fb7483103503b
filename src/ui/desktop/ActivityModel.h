// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ActivityEntry.h"

#include <QAbstractTableModel>
#include <QList>

namespace bram
{

/// The activity feed as the rows of a table, newest first.
class ActivityModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Time,
        Actor,
        Action,
        Detail,
        ColumnCount,
    };

    using QAbstractTableModel::QAbstractTableModel;

    /// New rows are put before those that are there, which keep their selection.
    void setEntries(const QList<ActivityEntry> &entries);
    /// Words and headings have changed with the language.
    void retranslate();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QList<ActivityEntry> m_entries;
};

} // namespace bram
