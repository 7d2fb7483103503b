// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/DecisionButton.h"

#include <QEvent>
#include <QKeyEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr qreal smallShare = 2.0 / 3;
constexpr QSize padding(20, 10);
constexpr int leastWidth = 96;
} // namespace

DecisionButton::DecisionButton(const QString &fixedText, const QKeySequence &shortcut,
                               QWidget *parent)
    : QPushButton(parent)
    , m_fixedText(fixedText)
    , m_shortcutText(shortcut.toString(QKeySequence::NativeText))
{
    setAutoDefault(false);
    setDefault(false);
    setAccessibleName(fixedText);
    setAccessibleDescription(m_shortcutText);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void DecisionButton::setGloss(const QString &gloss)
{
    m_gloss = gloss == m_fixedText ? QString() : gloss;
    setAccessibleName(m_gloss.isEmpty() ? m_fixedText : m_fixedText + u" ("_s + m_gloss + u')');
    updateGeometry();
    update();
}

void DecisionButton::setKeysAnswer(bool keysAnswer)
{
    m_keysAnswer = keysAnswer;
    update();
}

QStringList DecisionButton::smallLines() const
{
    return m_gloss.isEmpty() ? QStringList {m_shortcutText} : QStringList {m_gloss, m_shortcutText};
}

QFont DecisionButton::smallFont() const
{
    QFont small = font();
    small.setPointSizeF(font().pointSizeF() * smallShare);
    return small;
}

QSize DecisionButton::sizeHint() const
{
    const QFontMetrics metrics(font());
    const QFontMetrics smallMetrics(smallFont());
    QSize size(metrics.horizontalAdvance(m_fixedText), metrics.height());
    for (const QString &line : smallLines()) {
        size.setWidth(std::max(size.width(), smallMetrics.horizontalAdvance(line)));
        size.rheight() += smallMetrics.height();
    }
    return (size + padding).expandedTo({leastWidth, 0});
}

void DecisionButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
    }
}

void DecisionButton::focusInEvent(QFocusEvent *event)
{
    m_focusedByMouse = event->reason() == Qt::MouseFocusReason;
    QPushButton::focusInEvent(event);
}

void DecisionButton::mousePressEvent(QMouseEvent *event)
{
    if (!isResting()) {
        QPushButton::mousePressEvent(event);
    }
}

/// Return answers like the space bar, on a button that was given the focus.
void DecisionButton::keyPressEvent(QKeyEvent *event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !event->isAutoRepeat()) {
        click();
        return;
    }
    QPushButton::keyPressEvent(event);
}

void DecisionButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    const bool answers = isEnabled() && !isResting();
    if (!answers) {
        option.state &= ~QStyle::State_Enabled;
        option.palette.setCurrentColorGroup(QPalette::Disabled);
    }
    painter.drawControl(QStyle::CE_PushButton, option);

    const QFontMetrics metrics(font());
    const QFontMetrics smallMetrics(smallFont());
    const QStringList lines = smallLines();
    const int textHeight = metrics.height() + int(lines.size()) * smallMetrics.height();
    QRect line(0, (height() - textHeight) / 2, width(), metrics.height());
    if (isDown()) {
        line.translate(style()->pixelMetric(QStyle::PM_ButtonShiftHorizontal, &option, this),
                       style()->pixelMetric(QStyle::PM_ButtonShiftVertical, &option, this));
    }
    const auto draw = [&](const QString &text) {
        painter.drawItemText(line, Qt::AlignCenter | Qt::TextSingleLine, option.palette, answers,
                             text, QPalette::ButtonText);
        line.moveTop(line.bottom() + 1);
        line.setHeight(smallMetrics.height());
    };
    draw(m_fixedText);
    painter.setFont(smallFont());
    for (const QString &text : lines) {
        draw(text);
    }
}

} // namespace bram
