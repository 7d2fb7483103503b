// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QWidget>

namespace bram
{

/// What this program is, which version, and the licences of what it is built on. Escape closes it.
class AboutWindow final : public QWidget
{
    Q_OBJECT

public:
    AboutWindow();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    QLayout *makeHead();
    void retranslate();

    QLabel *m_crest;
    QLabel *m_name;
    QLabel *m_version;
    QLabel *m_text;
    QLabel *m_licencesTitle;
    QPlainTextEdit *m_licences;
    QPushButton *m_close;
};

} // namespace bram
