// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/OperatorPrompts.h"
#include "system/Reply.h"

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <QString>

#include <deque>
#include <functional>

namespace bram
{

class FileOpener;
class Preferences;

/// Tells and asks the operator in dialogs, one at a time. None of them is modal: requests go on arriving
/// and can be decided while one is open.
class DesktopPrompts final : public QObject, public OperatorPrompts
{
    Q_OBJECT

public:
    /// The folders chosen last are kept in `preferences`.
    DesktopPrompts(Preferences &preferences, FileOpener &opener);
    ~DesktopPrompts() override;

    QCoro::Task<> inform(Alert alert) override;
    QCoro::Task<qsizetype> ask(Question question) override;
    QCoro::Task<std::optional<QString>> askForFile(FileQuestion question) override;
    QCoro::Task<bool> openFile(QString path) override;
    void recall() override;

    /// Closes what is open and answers all that is asked, now and later, as one who turns away.
    void stop();

private:
    /// Makes the dialog, whose end answers what was asked.
    using MakeDialog = std::function<QDialog *()>;

    Reply<bool> open(const Alert &alert);
    Reply<qsizetype> open(const Question &question);
    Reply<std::optional<QString>> open(const FileQuestion &question);
    void enqueue(MakeDialog make);
    void showNext();
    QString lastFolder(const QString &operation) const;
    void rememberFolder(const QString &operation, const QString &chosenPath);

    Preferences &m_preferences;
    FileOpener &m_opener;
    std::deque<MakeDialog> m_waiting;
    QPointer<QDialog> m_open;
    QPointer<QWidget> m_above; ///< the window that the operator was at last
    bool m_isStopped = false;
};

} // namespace bram
