// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>

namespace bram
{

/// One line of plain text that gives way: what does not fit is left out in the middle, and stands in the
/// tooltip and for assistive technologies as a whole.
class ElidedLabel final : public QLabel
{
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    void setWholeText(const QString &text);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace bram
