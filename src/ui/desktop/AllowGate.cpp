// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/AllowGate.h"

#include "config/StoredSwitch.h"
#include "ui/desktop/ArmingGuard.h"
#include "ui/desktop/CommandTextView.h"

#include <QAbstractButton>
#include <QLabel>

namespace bram
{

AllowGate::AllowGate(CommandTextView &command, const QList<QAbstractButton *> &allow, QLabel &hint,
                     QObject *parent)
    : QObject(parent)
    , m_command(command)
    , m_allow(allow)
    , m_hint(hint)
{
    m_moment.setSingleShot(true);
    m_moment.setInterval(static_cast<int>(ArmingGuard::stillnessMs));
    connect(&m_moment, &QTimer::timeout, this, &AllowGate::apply);
    connect(&command, &CommandTextView::endSeen, this, &AllowGate::apply);
    close();
}

void AllowGate::setAllowPartlyShown(const StoredSwitch &allowPartlyShown)
{
    m_allowPartlyShown = &allowPartlyShown;
    connect(&allowPartlyShown, &StoredSwitch::changed, this, &AllowGate::apply);
}

void AllowGate::begin()
{
    m_isPending = true;
    m_moment.start();
    apply();
}

void AllowGate::close()
{
    m_isPending = false;
    apply();
}

void AllowGate::retranslate()
{
    m_hint.setText(tr("It can be allowed once its end has been in view."));
}

void AllowGate::apply()
{
    const bool isRead
        = m_command.isEndSeen() || (m_allowPartlyShown != nullptr && m_allowPartlyShown->isOn());
    for (QAbstractButton *button : m_allow) {
        button->setEnabled(m_isPending && isRead && !m_moment.isActive());
    }
    m_hint.setVisible(m_isPending && !isRead && !m_moment.isActive());
}

} // namespace bram
