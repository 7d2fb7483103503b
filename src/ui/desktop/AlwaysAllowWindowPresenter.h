// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/desktop/AlwaysAllowWindow.h"

#include <QObject>

#include <memory>

namespace bram
{

/// Keeps the approval list manager: one window at most, made when it is asked for and gone when it is closed.
class AlwaysAllowWindowPresenter final : public QObject
{
    Q_OBJECT

public:
    explicit AlwaysAllowWindowPresenter(const AlwaysAllowWindow::Collaborators &collaborators);
    ~AlwaysAllowWindowPresenter() override;

    /// Opens the window, or brings the one that is there to the front, in the language of now.
    void show();

private:
    void release();

    const AlwaysAllowWindow::Collaborators m_collaborators;
    std::unique_ptr<AlwaysAllowWindow> m_window;
};

} // namespace bram
