// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "system/Reply.h"

#include <QPlainTextEdit>
#include <QPushButton>
#include <QWidget>

namespace bram
{

/// A text file to be read: as plain text in a fixed-width face, with everything that could mislead as a mark.
/// Goes by itself when it is closed; Escape closes it.
class ReportWindow final : public QWidget
{
    Q_OBJECT

public:
    /// `otherProgram` is answered with true when the operator wants to read it with another program.
    ReportWindow(const QString &path, const QString &text, const ReplySource<bool> &otherProgram);

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void retranslate();

    const ReplySource<bool> m_otherProgram;
    QPlainTextEdit *m_text;
    QPushButton *m_open;
    QPushButton *m_close;
};

} // namespace bram
