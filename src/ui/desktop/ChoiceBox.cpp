// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ChoiceBox.h"

#include "system/NextTurn.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QWheelEvent>

#include <utility>

namespace bram
{

ChoiceBox::ChoiceBox(QWidget *parent)
    : QComboBox(parent)
{
    connect(this, &QComboBox::activated, this, [this](int index) {
        const QVariant value = itemData(index);
        const bool isOther = index != m_chosenIndex;
        setCurrentIndex(m_chosenIndex);
        closed();
        if (isOther) {
            Q_EMIT chosen(value);
        }
    });
}

void ChoiceBox::setChosen(const QVariant &value)
{
    m_chosenIndex = findData(value);
    setCurrentIndex(m_chosenIndex);
}

void ChoiceBox::showPopup()
{
    m_isListOpen = true;
    QComboBox::showPopup();
}

/// The list is hidden before its entry is chosen, by its row.
void ChoiceBox::hidePopup()
{
    QComboBox::hidePopup();
    inNextTurn(this, [this] {
        if (!view()->isVisible()) {
            closed();
        }
    });
}

void ChoiceBox::closed()
{
    if (std::exchange(m_isListOpen, false)) {
        Q_EMIT listClosed();
    }
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
