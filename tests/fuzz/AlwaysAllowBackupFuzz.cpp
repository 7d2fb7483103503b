// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "allowlist/AlwaysAllowBackup.h"
#include "allowlist/CommandDigest.h"

#include <QSet>

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = fuzz::toText(fuzz::toBytes(data, size));
    QSet<QString> digests;
    for (const auto &[digest, command, hasLineBreak] : parseAlwaysAllowBackup(text)) {
        require(fuzz::isTrimmed(digest), "an id is trimmed");
        require(!digests.contains(digest), "an id comes once");
        digests.insert(digest);
    }
    // Whatever a command is: its backup holds one entry, with this digest.
    const QString digest(64, u'a');
    for (const bool hasLineBreak : {false, true}) {
        const AlwaysAllowEntry entry {digest, text, AlwaysAllowSource::Both, false, hasLineBreak};
        const auto backed = parseAlwaysAllowBackup(alwaysAllowBackupText({entry}, u"Head"_s, 0));
        require(backed.size() == 1 && backed.constFirst().digest == digest
                    && backed.constFirst().hasLineBreak == hasLineBreak,
                "a command cannot forge an entry");
        const QString &command = backed.constFirst().command;
        require(command.endsWith(u'…') || command == text.trimmed(),
                "a command is whole or marked");
    }
    return 0;
}
