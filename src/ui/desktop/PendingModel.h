// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <QAbstractListModel>
#include <QList>

namespace bram
{

/// The pending requests as the rows of a list view, in the order of the board.
class PendingModel final : public QAbstractListModel
{
    Q_OBJECT

public:
    using QAbstractListModel::QAbstractListModel;

    const QList<ApprovalItem> &items() const { return m_items; }

    /// Replaces the rows; a row whose request is in both lists, unchanged, keeps its selection.
    void setItems(const QList<ApprovalItem> &items);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;

private:
    QList<ApprovalItem> m_items;
};

} // namespace bram
