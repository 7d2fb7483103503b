// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

class QObject;

namespace bram
{

class PracticeGateway;

/// Writes one line to standard output at once, for a program that reads it.
void printLine(const QString &line);

/// Prints what happens at the gateway, a line each, for as long as `context` lives:
/// `client connected`, `client refused: REASON`, `request ID AGENT COMMAND` (AGENT is `-` when there
/// is none), `decision ID DECISION accepted|unanswered`, `decision ID DECISION refused: TEXT`,
/// `resolved ID elsewhere`. What could mislead in a text from outside is shown as a mark.
void reportGateway(PracticeGateway &gateway, QObject *context);

} // namespace bram
