// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayClientError.h"

namespace bram
{

using namespace Qt::StringLiterals;

QString GatewayClientError::description() const
{
    switch (kind) {
    case Kind::Server:
        return message;
    case Kind::NotConnected:
        return u"Gateway not connected"_s;
    case Kind::InvalidResponse:
        return u"Invalid gateway response"_s;
    case Kind::TimedOut:
        return u"not confirmed: the gateway did not answer"_s;
    }
    Q_UNREACHABLE();
}

} // namespace bram
