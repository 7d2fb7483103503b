// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ui/language/AuditWords.h"
#include "ui/terminal/TerminalLine.h"

#include <QObject>

namespace bram
{

class TerminalVoice;

/// Says what must be known of the audit log, as that changes. Main thread.
class AuditNews final : public QObject
{
    Q_OBJECT

public:
    AuditNews(const AuditLogHealth &health, TerminalVoice &voice);

    /// Says how it is, and follows it from now on.
    void start();

    /// All that must be known now, for the operator who asks.
    TerminalLines lines(int columns) const;

private:
    void tell();

    const AuditLogHealth &m_health;
    TerminalVoice &m_voice;
    QList<AuditNotice> m_said;
};

} // namespace bram
