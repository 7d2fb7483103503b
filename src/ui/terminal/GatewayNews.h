// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QStringList>

namespace bram
{

class GatewayStatus;
class TerminalVoice;

/// Says how the gateway connection stands as that changes. A gateway that stays away is not news: what was
/// said is not said again until the connection works. Main thread.
class GatewayNews final : public QObject
{
    Q_OBJECT

public:
    GatewayNews(const GatewayStatus &status, TerminalVoice &voice);

    /// Says how it stands, and follows it from now on.
    void start();
    /// The operator has asked for something whose answer is one also when it is that of the last time.
    void expectAnswer() { m_said.clear(); }
    void tell();

private:
    const GatewayStatus &m_status;
    TerminalVoice &m_voice;
    QStringList m_said; ///< since the last working connection
};

} // namespace bram
