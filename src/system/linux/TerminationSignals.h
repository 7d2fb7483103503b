// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace bram
{

/// Turns SIGTERM, SIGINT and SIGHUP into one signal in the event loop, so that the program ends in good
/// order. One object a process. A second signal while the first is being served ends the process at once.
/// A signal that is ignored when this is made stays ignored.
class TerminationSignals final : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();
    ~TerminationSignals() override;
    Q_DISABLE_COPY_MOVE(TerminationSignals)

Q_SIGNALS:
    void requested();

private:
    int m_pipe[2] = {-1, -1}; ///< the handler writes to the second end
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace bram
