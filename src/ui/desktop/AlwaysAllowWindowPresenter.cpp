// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AlwaysAllowWindowPresenter.h"

#include "ui/desktop/BringToFront.h"

namespace bram
{

AlwaysAllowWindowPresenter::AlwaysAllowWindowPresenter(
    const AlwaysAllowWindow::Collaborators &collaborators)
    : m_collaborators(collaborators)
{
}

AlwaysAllowWindowPresenter::~AlwaysAllowWindowPresenter() = default;

void AlwaysAllowWindowPresenter::show()
{
    if (m_window) {
        m_window->retranslate();
    } else {
        m_window = std::make_unique<AlwaysAllowWindow>(m_collaborators);
        connect(m_window.get(), &AlwaysAllowWindow::closed, this,
                &AlwaysAllowWindowPresenter::release);
    }
    bringToFront(*m_window);
}

/// Not at once: it is still in its own event.
void AlwaysAllowWindowPresenter::release()
{
    if (m_window) {
        m_window.release()->deleteLater();
    }
}

} // namespace bram
