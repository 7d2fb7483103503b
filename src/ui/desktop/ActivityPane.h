// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/ActivityModel.h"

#include <QLabel>
#include <QStackedLayout>
#include <QTableView>
#include <QTimer>
#include <QWidget>

namespace bram
{

class ApprovalBoard;

/// The activity feed, up to date ten times a second.
class ActivityPane final : public QWidget
{
    Q_OBJECT

public:
    explicit ActivityPane(const ApprovalBoard &board, QWidget *parent = nullptr);

    void retranslate();

protected:
    void changeEvent(QEvent *event) override;

private:
    void refresh();
    void fitColumns();

    const ApprovalBoard &m_board;
    ActivityModel m_model;
    QTimer m_pause;
    QLabel *m_title;
    QTableView *m_table;
    QLabel *m_empty;
    QStackedLayout *m_stack;
};

} // namespace bram
