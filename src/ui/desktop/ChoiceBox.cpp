// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ChoiceBox.h"

#include <QKeyEvent>
#include <QWheelEvent>

namespace bram
{

ChoiceBox::ChoiceBox(QWidget *parent)
    : QComboBox(parent)
{
    connect(this, &QComboBox::activated, this, [this](int index) {
        setCurrentIndex(m_chosenIndex);
        if (index != m_chosenIndex) {
            Q_EMIT chosen(itemData(index));
        }
    });
}

void ChoiceBox::setChosen(const QVariant &value)
{
    m_chosenIndex = findData(value);
    setCurrentIndex(m_chosenIndex);
}

void ChoiceBox::wheelEvent(QWheelEvent *event)
{
    event->ignore(); // for the page to scroll
}

void ChoiceBox::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Escape:
    case Qt::Key_Enter:
    case Qt::Key_Return:
        event->ignore();
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Space:
    case Qt::Key_F4:
        showPopup();
        break;
    default:
        // Neither a letter nor Home, End, Page Up or Page Down chooses; a modifier alone is nothing.
        event->ignore();
        break;
    }
}

} // namespace bram
