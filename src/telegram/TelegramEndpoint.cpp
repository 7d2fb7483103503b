// SPDX-License-Identifier: Apache-2.0
#include "telegram/TelegramEndpoint.h"

#include <QHostAddress>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString variable = u"BRACKWEN_TELEGRAM_API_URL"_s;

bool isThisMachine(const QString &host)
{
    return host == "localhost"_L1 || QHostAddress(host).isLoopback();
}
} // namespace

std::expected<QUrl, Error> telegramApiUrl(const Environment &environment)
{
    const auto text = environment.trimmed(variable);
    if (!text) {
        return QUrl(u"https://api.telegram.org"_s);
    }
    const QUrl url(*text, QUrl::StrictMode);
    const bool isHttp = url.scheme() == "http"_L1;
    if (!url.isValid() || url.host().isEmpty() || (!isHttp && url.scheme() != "https"_L1)) {
        return std::unexpected(Error {variable + u" is no http or https address"_s});
    }
    if (!url.userInfo().isEmpty() || url.hasQuery() || url.hasFragment()) {
        return std::unexpected(
            Error {variable + u" must hold no user name, no query and no fragment"_s});
    }
    if (isHttp && !isThisMachine(url.host())) {
        return std::unexpected(
            Error {variable + u" is refused: plain http is for this machine only"_s});
    }
    return url;
}

} // namespace bram
