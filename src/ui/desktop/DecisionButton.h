// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeySequence>
#include <QPushButton>

namespace bram
{

/// A button with a text of fixed language, and below it in smaller type what it means in the language of
/// the program, and its shortcut. It is never a default button.
///
/// Where the focus has come by a key, it rests until keys answer: it looks disabled, and does nothing.
class DecisionButton final : public QPushButton
{
    Q_OBJECT

public:
    DecisionButton(const QString &fixedText, const QKeySequence &shortcut,
                   QWidget *parent = nullptr);

    /// No line of its own when it says just what the fixed text says.
    void setGloss(const QString &gloss);
    void setKeysAnswer(bool keysAnswer);
    bool isResting() const { return hasFocus() && !m_keysAnswer && !m_focusedByMouse; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void changeEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QStringList smallLines() const;
    QFont smallFont() const;

    QString m_fixedText;
    QString m_shortcutText;
    QString m_gloss;
    bool m_keysAnswer = true;
    bool m_focusedByMouse = false;
};

} // namespace bram
