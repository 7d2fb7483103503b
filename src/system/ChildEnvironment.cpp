// SPDX-License-Identifier: Apache-2.0
#include "system/ChildEnvironment.h"

namespace bram
{

using namespace Qt::StringLiterals;

QProcessEnvironment childEnvironment(const QStringList &neededSecrets)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString &name : environment.keys()) {
        const bool isOurs = name.startsWith("BRACKWEN_"_L1) || name == "TELEGRAM_BOT_TOKEN"_L1;
        const bool isSecret = name.endsWith("TOKEN"_L1) || name.endsWith("PASSWORD"_L1);
        if (isOurs && isSecret && !neededSecrets.contains(name)) {
            environment.remove(name);
        }
    }
    return environment;
}

} // namespace bram
