// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QLabel>
#include <QPushButton>
#include <QTabWidget>
#include <QWidget>

#include <memory>
#include <vector>

namespace bram
{

class SettingsPage;

/// What can be set, in pages. Each change takes effect at once: there is nothing to apply or to take back.
/// Escape closes it.
class SettingsWindow final : public QWidget
{
    Q_OBJECT

public:
    SettingsWindow();
    ~SettingsWindow() override;

    void addPage(std::unique_ptr<SettingsPage> page);

protected:
    void changeEvent(QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void retranslate();
    void refresh();

    QTabWidget *m_tabs;
    std::vector<SettingsPage *> m_pages; ///< in the order of their tabs
    QLabel *m_notice;
    QPushButton *m_close;
};

} // namespace bram
