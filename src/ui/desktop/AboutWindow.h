// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QWidget>

namespace bram
{

/// What this program is, and which version. Escape closes it.
class AboutWindow final : public QWidget
{
    Q_OBJECT

public:
    AboutWindow();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void retranslate();

    QLabel *m_crest;
    QLabel *m_name;
    QLabel *m_version;
    QLabel *m_text;
    QPushButton *m_close;
};

} // namespace bram
