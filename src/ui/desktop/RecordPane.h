// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QGroupBox>
#include <QTimer>

class QLabel;
class QProgressBar;
class QPushButton;

namespace bram
{

class RecordActions;

/// What can be taken out of the audit log, and how far that has come while it is being done.
class RecordPane final : public QGroupBox
{
    Q_OBJECT

public:
    explicit RecordPane(RecordActions &actions, QWidget *parent = nullptr);

    void retranslate();

protected:
    void changeEvent(QEvent *event) override;

private:
    void showWork();

    RecordActions &m_actions;
    QPushButton *m_saveReport;
    QPushButton *m_viewReport;
    QPushButton *m_exportBundle;
    QTimer m_showing; ///< what is done in a moment shows no progress
    QWidget *m_progressArea;
    QLabel *m_progressText;
    QProgressBar *m_progress;
    QPushButton *m_cancel;
};

} // namespace bram
