// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "allowlist/AlwaysAllowEntry.h"
#include "monitor/AlwaysAllowInquiry.h"

#include <QLabel>
#include <QList>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

class QGridLayout;

namespace bram
{

class CommandTextView;
class ElidedLabel;

/// What is known of the entry that is selected, and what can be done with it or with several.
class AlwaysAllowEntryPane final : public QWidget
{
    Q_OBJECT

public:
    explicit AlwaysAllowEntryPane(const AlwaysAllowInquiry::Collaborators &collaborators,
                                  QWidget *parent = nullptr);
    ~AlwaysAllowEntryPane() override;

    void setSelected(const QList<AlwaysAllowEntry> &entries);
    /// While an operation asks the operator something, none other begins.
    void setOperable(bool operable);
    void retranslate();

Q_SIGNALS:
    /// With those of the selected entries that the application's list does not have.
    void additionRequested(const QList<bram::AlwaysAllowEntry> &entries);
    void removalRequested(const QList<bram::AlwaysAllowEntry> &entries);

protected:
    void changeEvent(QEvent *event) override;

private:
    void build();
    void showSelected();
    void showEntry(const AlwaysAllowEntry &entry);
    void showSeveral();
    void showFacts();
    void showButtons();
    void recolour();
    QList<AlwaysAllowEntry> addable() const;
    QString noteOn(const AlwaysAllowEntry &entry) const;
    QString placesText(const AlwaysAllowEntry &entry) const;
    QString lastAnswerText() const;

    const AlwaysAllowInquiry::Collaborators m_collaborators;
    AlwaysAllowInquiry m_inquiry;
    QTimer m_settling; ///< passing over entries with the arrow keys reads no files
    QTimer m_answersPause; ///< between two looks at the latest answers
    QList<AlwaysAllowEntry> m_entries;
    bool m_isOperable = true;
    QLabel *m_summary; ///< of none or several
    QLabel *m_warning;
    CommandTextView *m_command;
    QLabel *m_note;
    QWidget *m_factsArea;
    QGridLayout *m_facts;
    QList<QLabel *> m_names; ///< of the facts
    ElidedLabel *m_id;
    QLabel *m_places;
    QLabel *m_lastAnswer;
    QPushButton *m_copyId;
    QPushButton *m_add;
    QPushButton *m_remove;
};

} // namespace bram
