// SPDX-License-Identifier: Apache-2.0
#include "app/Places.h"

#include <QProcessEnvironment>
#include <QStandardPaths>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr QLatin1StringView folderName("BrackwenApprovalsMenu");
constexpr QLatin1StringView preferencesName("preferences.ini");
} // namespace

Places Places::ofOperator()
{
    using Paths = QStandardPaths;
    return {
        .preferencesFile = Paths::writableLocation(Paths::GenericConfigLocation) + u'/' + folderName
            + u'/' + preferencesName,
        .dataFolder = Paths::writableLocation(Paths::GenericDataLocation) + u'/' + folderName,
        .environment = Environment::ofProcess(),
        .account = AccountFacts::ofProcess(),
        .autostart = AutostartEntry::Places::ofProcess(),
    };
}

Places Places::ofPractice(const QString &folder, const QString &gatewayUrl)
{
    QProcessEnvironment variables;
    variables.insert(u"BRACKWEN_GATEWAY_URL"_s, gatewayUrl);
    return {
        .preferencesFile = folder + u'/' + preferencesName,
        .dataFolder = folder,
        .environment = Environment(variables),
        .account = {.homeFolder = folder,
                    .userDatabaseHome = std::nullopt,
                    .loginName = {},
                    .usersFolder = folder},
    };
}

} // namespace bram
