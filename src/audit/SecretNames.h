// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QStringView>

namespace bram
{

/// Whether a variable or field of this name holds a secret, when "=" and its value follow. Generous: `KEY`, `PASS`
/// and `PWD` anywhere in it are enough.
bool isNameOfSecretVariable(QStringView name);

/// Whether an option or header of this name does, when a blank or a colon and its value follow, as in prose.
bool isNameOfSecretOption(QStringView name);

/// How many units at the beginning of `word` are a key of a well-known shape; 0 when it is none. `word` consists of
/// letters, digits, "-", "_" and ".". Looks at more than a few units only of what it finds to be one.
qsizetype keyLength(QStringView word);

} // namespace bram
