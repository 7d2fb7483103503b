// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "allowlist/AlwaysAllowBackup.h"
#include "allowlist/AppAlwaysAllowList.h"
#include "allowlist/CommandDigest.h"

#include <QSet>

#include <algorithm>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = fuzz::toText(fuzz::toBytes(data, size));
    QSet<QString> digests;
    for (const BackedUpCommand &backed : parseAlwaysAllowBackup(text)) {
        require(fuzz::isTrimmed(backed.digest), "an id is trimmed");
        require(!digests.contains(backed.digest), "an id comes once");
        require(std::ranges::all_of(backed.forms, isCommandForm), "a form is one");
        digests.insert(backed.digest);
    }
    // Whatever a command is: its backup holds one entry, with this digest.
    const QString digest = normalizedCommandDigest(text).value_or(QString(64, u'a'));
    for (const QStringList &forms : {QStringList(), QStringList(plainCommandForm.toString()),
                                     QStringList(commandForm(text))}) {
        const AlwaysAllowEntry entry {digest, text, AlwaysAllowSource::Both, false, forms};
        const auto backed = parseAlwaysAllowBackup(alwaysAllowBackupText({entry}, u"Head"_s, 0));
        require(backed.size() == 1 && backed.constFirst().digest == digest
                    && !backed.constFirst().isSecuritySensitive
                    && (backed.constFirst().isTextExact
                            ? knownCommand(backed.constFirst().command, digest).forms
                            : backed.constFirst().forms)
                        == forms,
                "a command cannot forge an entry, and what is known of it is kept");
        const QString &command = backed.constFirst().command;
        require(command.endsWith(u'…') || command == text.trimmed(),
                "a command is whole or marked");
    }
    return 0;
}
