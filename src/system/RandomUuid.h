// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// A new random UUID in lower case with hyphens: a name that nobody else has, not a secret: who has
/// seen enough of them can tell the next, and a forked child gives the same ones, so it is nothing for nonces,
/// tokens or codes. It comes from a
/// generator in the program, which the operating system's has seeded once; to ask that one each time, as
/// `QUuid::createUuid` does, costs more than all else about a frame. Any thread.
QString randomUuid();

} // namespace bram
