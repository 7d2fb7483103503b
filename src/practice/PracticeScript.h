// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QString>

#include <expected>
#include <vector>

namespace bram
{

enum class ScriptVerb {
    Request, ///< `request ID AGENT COMMAND…`
    RequestFor, ///< `request-for SECONDS ID AGENT COMMAND…`: expires after that time
    Sample, ///< `sample`: announces the next sample request
    Resolve, ///< `resolve ID`: decided elsewhere
    Wait, ///< `wait MS`
    WaitClient, ///< `wait-client`: until a client is let in; at once if one is
    WaitDecision, ///< `wait-decision ID`: until a decision on ID came, since the start of the script
    Answer, ///< `answer`: decisions are answered as usual again
    ResolvedFirst, ///< `resolved-first`: decisions are announced before they are answered
    Delay, ///< `delay MS`: decisions are answered that much later
    NeverAnswer, ///< `never-answer`
    DropAnswer, ///< `drop-answer`: decisions are answered by cutting the connection
    AnswerError, ///< `error TEXT`: decisions are answered with this error
    Reject, ///< `reject TEXT`: the next handshake is refused with this text
    Drop, ///< `drop`: cuts every connection
    Close, ///< `close`: as if the gateway were killed
    Listen, ///< `listen`: brings it back
    Raw, ///< `raw TEXT`: sends this text as a frame, whatever it is
    RawBinary, ///< `raw-binary HEX`: sends these bytes as a binary frame
    Quit, ///< `quit`: ends the program
};

/// One step of a script. Which fields carry something follows from the verb.
struct ScriptStep {
    ScriptVerb verb = ScriptVerb::Quit;
    QString id {};
    QString agent {}; ///< empty: none
    QString text {}; ///< the command, text or hexadecimal digits
    int number = 0; ///< milliseconds, or seconds for `request-for`
    int line = 0; ///< in the file, from 1

    bool operator==(const ScriptStep &) const = default;
};

/// Reads a script: one step a line, words separated by blanks; empty lines and lines that begin with
/// `#` are skipped. `-` as AGENT means none. In COMMAND and TEXT, `\n`, `\t`, `\\` and `\uXXXX` stand
/// for a line feed, a tab, a backslash and a UTF-16 code unit. The error is one line, "line N: …".
std::expected<std::vector<ScriptStep>, Error> parsePracticeScript(const QString &text);

} // namespace bram
