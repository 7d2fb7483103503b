// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>

namespace bram
{

/// The catalogue context of the terminal front-end: `TerminalTr::tr("…")`.
class TerminalTr
{
    Q_DECLARE_TR_FUNCTIONS(Terminal)
};

} // namespace bram
