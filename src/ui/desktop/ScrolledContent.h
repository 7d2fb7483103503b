// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QScrollArea>

namespace bram
{

/// The content of a window, which takes the window's size as long as it can, and moves as a whole below its smallest
/// size. (A scroll area by itself lets texts that wrap take their preferred height, and moves much earlier.)
class ScrolledContent final : public QScrollArea
{
    Q_OBJECT

public:
    /// Of a widget with a layout, which becomes this object's.
    explicit ScrolledContent(QWidget *content, QWidget *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fit();
};

} // namespace bram
