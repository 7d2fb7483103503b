// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QString>

namespace bram
{

/// How a line stands out where the terminal has colours.
enum class LineStyle {
    Plain,
    Strong,
    Danger,
    Warning,
    Quiet,
};

/// One line for the operator: no line feed, no control character.
struct TerminalLine {
    QString text;
    LineStyle style = LineStyle::Plain;
    /// The part of a plain line that is drawn faintly where the terminal can.
    qsizetype faintBegin = 0;
    qsizetype faintEnd = 0;

    bool operator==(const TerminalLine &) const = default;
};

using TerminalLines = QList<TerminalLine>;

} // namespace bram
