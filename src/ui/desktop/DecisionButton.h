// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QKeySequence>
#include <QPushButton>

namespace bram
{

/// A button with a text of fixed language, and below it in smaller type what it means in the language of
/// the program, and its shortcut. It is never a default button.
class DecisionButton final : public QPushButton
{
    Q_OBJECT

public:
    DecisionButton(const QString &fixedText, const QKeySequence &shortcut,
                   QWidget *parent = nullptr);

    /// No line of its own when it says just what the fixed text says.
    void setGloss(const QString &gloss);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QStringList smallLines() const;
    QFont smallFont() const;

    QString m_fixedText;
    QString m_shortcutText;
    QString m_gloss;
};

} // namespace bram
