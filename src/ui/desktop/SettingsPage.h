// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QWidget>

class QFormLayout;

namespace bram
{

/// A page of the settings: rows of a label and a control, with notes below. What is changed takes effect at
/// once. To add one, derive from this and hand it to `SettingsWindow::addPage`.
class SettingsPage : public QWidget
{
    Q_OBJECT

public:
    explicit SettingsPage(QWidget *parent = nullptr);

    /// The name on its tab, with a letter to reach it by.
    virtual QString title() const = 0;
    /// Shows what is in effect now. Called each time that the window is shown or comes to the front.
    virtual void refresh() = 0;

protected:
    /// Writes every text anew and shows what is in effect. Called after a change of the language.
    virtual void retranslate() = 0;

    QFormLayout *form() const { return m_form; }
    /// A row with a label for it, which `setRowLabel` writes and whose letter leads to `buddy`.
    void addRow(QWidget *field, QWidget *buddy = nullptr);
    void setRowLabel(QWidget *field, const QString &text);
    /// Below what is in the row before, or as wide as the page.
    enum class NotePlace {
        BelowField,
        WholeRow,
    };
    /// A text; one that is empty takes no room.
    QLabel *addNote(NotePlace place = NotePlace::BelowField);
    void setNote(QLabel *note, const QString &text);

    void changeEvent(QEvent *event) override;

private:
    QFormLayout *m_form;
};

} // namespace bram
