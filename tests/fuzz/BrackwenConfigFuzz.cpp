// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "gateway/GatewayCredentialStore.h"

#include <QFile>
#include <QTemporaryDir>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(u"brackwen.json"_s);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly | QIODevice::Truncate), "the file can be written");
    file.write(fuzz::toBytes(data, size));
    file.close();

    QProcessEnvironment variables;
    variables.insert(u"BRACKWEN_CONFIG"_s, path);
    AccountFacts account;
    account.homeFolder = folder.path();
    const BrackwenConfig config {Environment(variables), account};
    require(config.isPresent(), "a file is a configuration, whatever it holds");
    if (const auto found = loadGatewayCredentialsFromBrackwenConfig(config)) {
        require(found->token || found->password, "credentials are not empty");
        require(!found->token || fuzz::isTrimmed(*found->token), "a token is never blank");
        require(!found->password || fuzz::isTrimmed(*found->password), "a password is never blank");
        require(config.loadObjects().size() == 1, "credentials come from one JSON object");
    }
    return 0;
}
