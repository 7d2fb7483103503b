// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/SettingsPage.h"

#include <QEvent>
#include <QFormLayout>

namespace bram
{

namespace
{
/// A label that breaks its lines asks for the height that it needs when it is narrow, and the layout gives it at
/// least that. This one asks for a line, and gets more for its width where it needs more.
class NoteLabel final : public QLabel
{
public:
    using QLabel::QLabel;

    QSize sizeHint() const override
    {
        constexpr int letters = 20;
        return {fontMetrics().averageCharWidth() * letters, fontMetrics().height()};
    }
    QSize minimumSizeHint() const override { return sizeHint(); }
};
} // namespace

SettingsPage::SettingsPage(QWidget *parent)
    : QWidget(parent)
    , m_form(new QFormLayout(this))
{
    m_form->setContentsMargins(16, 16, 16, 16);
    m_form->setHorizontalSpacing(12);
    m_form->setVerticalSpacing(8);
    m_form->setRowWrapPolicy(QFormLayout::WrapLongRows);
    m_form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    m_form->setLabelAlignment(Qt::AlignLeft);
}

void SettingsPage::addRow(QWidget *field, QWidget *buddy)
{
    auto *label = new QLabel(this);
    label->setBuddy(buddy != nullptr ? buddy : field);
    m_form->addRow(label, field);
}

void SettingsPage::setRowLabel(QWidget *field, const QString &text)
{
    static_cast<QLabel *>(m_form->labelForField(field))->setText(text);
}

QLabel *SettingsPage::addNote(NotePlace place)
{
    auto *note = new NoteLabel(this);
    note->setTextFormat(Qt::PlainText);
    note->setWordWrap(true);
    note->setTextInteractionFlags(Qt::TextSelectableByMouse);
    note->setAlignment(Qt::AlignTop);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    note->setSizePolicy(policy);
    if (place == NotePlace::WholeRow) {
        m_form->addRow(note);
    } else {
        m_form->addRow(QString(), note);
    }
    return note;
}

void SettingsPage::setNote(QLabel *note, const QString &text)
{
    note->setText(text);
    m_form->setRowVisible(note, !text.isEmpty());
}

void SettingsPage::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange) {
        retranslate();
    }
}

} // namespace bram
