// SPDX-License-Identifier: Apache-2.0
#include "system/SecretStore.h"

namespace bram
{

using namespace Qt::StringLiterals;

QString KeychainError::description() const
{
    if (!platformMessage.isEmpty()) {
        return platformMessage;
    }
    return u"Keychain error (status=%1)"_s.arg(status);
}

} // namespace bram
