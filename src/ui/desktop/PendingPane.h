// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalDecision.h"
#include "ui/desktop/PendingModel.h"

#include <QLabel>
#include <QListView>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include <optional>

namespace bram
{

class AllowGate;
class CommandTextView;
class DesktopActions;

/// The pending requests in a window: a list, and of the one that is selected the whole command and what
/// can be done about it. Nothing is ever selected but by the operator's hand, so that no request slides
/// under a button.
class PendingPane final : public QWidget
{
    Q_OBJECT

public:
    explicit PendingPane(DesktopActions &actions, QWidget *parent = nullptr);

    void setItems(const QList<ApprovalItem> &items);
    void retranslate();

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    std::optional<ApprovalItem> selected() const;
    void build();
    QWidget *makeDetails();
    void showSelected();
    void showFacts();
    void recolour();
    void decide(ApprovalDecision decision);

    DesktopActions &m_actions;
    PendingModel m_model;
    std::optional<ApprovalItem> m_shown; ///< in the details
    QTimer m_secondHand; ///< runs while it can be seen
    QLabel *m_title;
    QListView *m_list;
    QLabel *m_facts;
    QLabel *m_warning;
    CommandTextView *m_command;
    QLabel *m_hint;
    QPushButton *m_allowOnce;
    QPushButton *m_alwaysAllow;
    QPushButton *m_deny;
    QPushButton *m_copyDetails;
    QPushButton *m_copyId;
    AllowGate *m_gate;
};

} // namespace bram
