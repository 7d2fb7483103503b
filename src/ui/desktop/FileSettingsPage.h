// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/SettingsPage.h"

#include <QCoro/QCoroTask>
#include <QPointer>

#include <functional>
#include <vector>

class QGridLayout;
class QLineEdit;
class QPushButton;

namespace bram
{

class BackgroundTasks;
class FileOpener;

/// Something of this program, or that it reads, on the disk.
struct FilePlace {
    enum class Kind {
        Preferences,
        Data, ///< the folder with the audit log and the reports
        Configuration, ///< the platform's, which is in use; or the first place where it may lie
        ExecApprovals, ///< the folder with the platform's own always-allow lists
        Lock,
    };

    Kind kind = Kind::Preferences;
    QString path;

    bool operator==(const FilePlace &) const = default;
};

/// Where files live, each with a button that opens it, or the folder it lies in.
class FileSettingsPage final : public SettingsPage
{
    Q_OBJECT

public:
    struct Collaborators {
        std::function<QList<FilePlace>()> places; ///< as they are now
        FileOpener &opener;
        BackgroundTasks &tasks;
    };

    explicit FileSettingsPage(const Collaborators &collaborators);

    QString title() const override;
    void refresh() override;

protected:
    void retranslate() override;

private:
    struct Row {
        FilePlace place;
        QLabel *name;
        QLineEdit *path;
        QPushButton *open;
    };

    void makeRows(const QList<FilePlace> &places);
    void labelRow(const Row &row) const;
    void open(const FilePlace &place);
    static QCoro::Task<> opening(QPointer<FileSettingsPage> self, QString path);

    Collaborators m_collaborators;
    QGridLayout *m_grid;
    std::vector<Row> m_rows;
    QLabel *m_problem;
    QLabel *m_meaning;
};

} // namespace bram
