// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/ElidedLabel.h"

#include <QStyle>
#include <QStyleOption>
#include <QStylePainter>
#include <QTextDocument>

#include <algorithm>

namespace bram
{

namespace
{
/// More than this is never laid out: a text from outside can be of any length.
constexpr qsizetype mostCharacters = 2000;
constexpr int widestHint = 400;
} // namespace

ElidedLabel::ElidedLabel(QWidget *parent)
    : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void ElidedLabel::setWholeText(const QString &text)
{
    if (text == this->text()) {
        return;
    }
    setText(text);
    setAccessibleName(text);
    // A tooltip takes what looks like markup for markup.
    setToolTip(Qt::convertFromPlainText(text.left(mostCharacters)));
    updateGeometry();
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {0, fontMetrics().height()};
}

QSize ElidedLabel::sizeHint() const
{
    const QString measured = text().left(mostCharacters);
    return {std::min(widestHint, fontMetrics().horizontalAdvance(measured) + 1),
            fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QString shown = text();
    if (shown.size() > mostCharacters) {
        shown = shown.left(mostCharacters / 2) + QChar(0x2026) + shown.right(mostCharacters / 2);
    }
    shown = fontMetrics().elidedText(shown, Qt::ElideMiddle, width());
    painter.drawItemText(rect(), int(alignment()) | Qt::TextSingleLine, palette(), isEnabled(),
                         shown, foregroundRole());
}

} // namespace bram
