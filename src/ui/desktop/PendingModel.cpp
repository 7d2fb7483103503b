// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/PendingModel.h"

#include "ui/desktop/MenuText.h"

#include <QHash>

namespace bram
{

void PendingModel::setItems(const QList<ApprovalItem> &items)
{
    if (items == m_items) {
        return;
    }
    Q_EMIT layoutAboutToBeChanged();
    const QModelIndexList before = persistentIndexList();
    QHash<QString, qsizetype> rows;
    if (!before.isEmpty()) {
        for (qsizetype i = 0; i < items.size(); ++i) {
            rows.insert(items.at(i).approvalId, i);
        }
    }
    QModelIndexList after;
    for (const QModelIndex &index : before) {
        const ApprovalItem &item = m_items.at(index.row());
        const qsizetype row = rows.value(item.approvalId, -1);
        after.append(row >= 0 && isSameQuestion(items.at(row), item)
                         ? createIndex(static_cast<int>(row), 0)
                         : QModelIndex());
    }
    m_items = items;
    changePersistentIndexList(before, after);
    Q_EMIT layoutChanged();
}

int PendingModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_items.size());
}

QVariant PendingModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_items.size()) {
        return {};
    }
    if (role == Qt::DisplayRole || role == Qt::AccessibleTextRole) {
        return pendingRowText(m_items.at(index.row()));
    }
    return {};
}

} // namespace bram
