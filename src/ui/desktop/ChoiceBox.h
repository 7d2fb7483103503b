// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QComboBox>

namespace bram
{

/// A choice of which each takes effect at once. So the wheel and a key on the closed box choose nothing: a
/// key opens the list, in which Enter or a click chooses and Escape does not.
class ChoiceBox final : public QComboBox
{
    Q_OBJECT

public:
    explicit ChoiceBox(QWidget *parent = nullptr);

    /// Shows the choice with this value as the one in effect.
    void setChosen(const QVariant &value);

    /// While the list is open its entries stay where they are: who fills the box waits for `listClosed`.
    bool isListOpen() const { return m_isListOpen; }

    void showPopup() override;
    void hidePopup() override;

Q_SIGNALS:
    /// Somebody has chosen another entry; until `setChosen`, the box goes on showing what is in effect.
    void chosen(const QVariant &value);
    void listClosed();

protected:
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void closed();

    int m_chosenIndex = -1;
    bool m_isListOpen = false;
};

} // namespace bram
