// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

namespace bram
{

/// `text`, which is valid UTF-16, with "[REDACTED]" in the place of everything that looks like a secret:
///   - keys of well-known shapes, JSON web tokens and private keys in PEM;
///   - the value of a name that speaks of one: `NAME=value`, `--name value`, `--name=value`, `"name": "value"`,
///     `Name: value`, and what follows the scheme in an Authorization header;
///   - user name and password in an address, and those of `-u user:password`;
///   - the password that `mysql -p…`, `sshpass -p`, `docker login -p` and the like take;
///   - what is left of a value up to the next blank behind an earlier "[REDACTED]".
/// In doubt it masks more. Takes time in proportion to the text, whatever stands in it.
QString withSecretsMasked(const QString &text);

} // namespace bram
