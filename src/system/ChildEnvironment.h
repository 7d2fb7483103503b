// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QProcessEnvironment>
#include <QStringList>

namespace bram
{

/// This program's environment for a program that it starts: without the tokens and passwords that were meant
/// for this one, except for those the other needs.
QProcessEnvironment childEnvironment(const QStringList &neededSecrets = {});

} // namespace bram
