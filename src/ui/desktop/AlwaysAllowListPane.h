// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/AlwaysAllowModel.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSet>
#include <QStackedLayout>
#include <QWidget>

#include <optional>

class QTableView;

namespace bram
{

/// The entries of the always-allow list with a search above them. Selection and place are those of the entries
/// themselves: they stay with them when the list changes, and what is not shown is not selected.
class AlwaysAllowListPane final : public QWidget
{
    Q_OBJECT

public:
    explicit AlwaysAllowListPane(QWidget *parent = nullptr);
    ~AlwaysAllowListPane() override;

    /// Takes effect when no mouse button is held on the list: no row moves under the pointer in a click.
    void setEntries(const QList<AlwaysAllowEntry> &entries);
    void retranslate();

    // In the order of their rows.
    QList<AlwaysAllowEntry> selected() const;
    /// Without what the search leaves out.
    QList<AlwaysAllowEntry> shown() const;

    void focusSearch();

Q_SIGNALS:
    void selectionChanged();
    /// The key for it was pressed on the list.
    void removalRequested();
    /// Escape, where there is nothing to clear.
    void closeRequested();

protected:
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// Where the reader is.
    struct Place {
        QSet<QString> selected; ///< digests
        QString current;
        int currentRow = -1;
        QString top; ///< the first entry in view
        int topOffset = 0; ///< how much of it is out of view
    };

    void build();
    void show(const QList<AlwaysAllowEntry> &entries);
    Place place() const;
    void restore(const Place &place);
    void search(const QString &words);
    void showCount();
    void fitRows();
    bool keyPressed(QObject *watched, int key);

    AlwaysAllowModel m_model;
    AlwaysAllowFilter m_filter;
    std::optional<QList<AlwaysAllowEntry>> m_held; ///< until the mouse button is let go
    QLabel *m_title;
    QLineEdit *m_search;
    QTableView *m_table;
    QWidget *m_empty;
    QLabel *m_emptyText;
    QLabel *m_emptyHint;
    QPushButton *m_clearSearch;
    QStackedLayout *m_stack;
};

} // namespace bram
