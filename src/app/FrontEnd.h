// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "monitor/MonitorPorts.h"

#include <QObject>

namespace bram
{

class Core;
class OperatorChat;
class OperatorPrompts;

/// What the operator sees of the program: the desktop or a terminal. Made before the core, because the
/// core calls its ports, and started once the core is there.
class FrontEnd : public QObject
{
    Q_OBJECT

public:
    virtual MonitorPorts ports() { return {}; }
    /// Shows itself. `core` lives longer than this front-end is used; so does the chat of the practice mode,
    /// which is null otherwise.
    virtual void start(Core &core, OperatorChat *practiceChat) = 0;
    /// How operations tell and ask this operator; there from the start on.
    virtual OperatorPrompts &prompts() = 0;
    /// What is asked, now and later, is answered as by one who turns away.
    virtual void stopAsking() = 0;
    /// The end of the program: nothing is asked any more, and what was said is out.
    virtual void finish() = 0;

Q_SIGNALS:
    void quitRequested();
};

} // namespace bram
