// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowEntry.h"

#include <QAbstractTableModel>
#include <QList>
#include <QSortFilterProxyModel>

namespace bram
{

/// The entries of the always-allow list as the rows of a table, in the order of the list.
class AlwaysAllowModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        Command,
        Source,
        Warning,
        ColumnCount,
    };

    /// Of a command's cell: the line with the digest.
    static constexpr int idRole = Qt::UserRole;

    using QAbstractTableModel::QAbstractTableModel;

    const QList<AlwaysAllowEntry> &entries() const { return m_entries; }
    /// Replaces all rows.
    void setEntries(const QList<AlwaysAllowEntry> &entries);
    /// Words and headings have changed with the language.
    void retranslate();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QVariant commandData(const AlwaysAllowEntry &entry, int role) const;

    QList<AlwaysAllowEntry> m_entries;
};

/// Those of the entries that the operator looks for, in the order of a column.
class AlwaysAllowFilter final : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit AlwaysAllowFilter(AlwaysAllowModel &model, QObject *parent = nullptr);

    /// Keeps the entries that have each of the words in their command, digest or source, whatever the case.
    void setSearch(const QString &words);
    bool isSearching() const { return !m_words.isEmpty(); }

    const AlwaysAllowEntry &entry(int row) const;

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    const AlwaysAllowModel &m_model;
    QStringList m_words;
};

} // namespace bram
