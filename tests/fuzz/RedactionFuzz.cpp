// SPDX-License-Identifier: Apache-2.0
#include "Fuzz.h"

#include "audit/Redaction.h"

using namespace bram;
using namespace Qt::StringLiterals;
using bram::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString around = fuzz::toText(fuzz::toBytes(data, size));
    const QString botToken = u"987654321:Zq7Zq7Zq7Zq7Zq7Zq7Zq7Zq7"_s;
    const QString value = u"Qz4Qz4Qz4"_s;
    if (around.contains(botToken) || around.contains(value)) {
        return 0; // not at a place where the rules would look
    }
    const QString before = around.first(around.size() / 2);
    const QString behind = around.sliced(around.size() / 2);
    const QString masked
        = redacted(before + u" "_s + botToken + u" ;token="_s + value + u';' + behind);
    require(masked.isValidUtf16(), "what goes out is text");
    require(!masked.contains(botToken), "a bot token is masked, whatever stands around it");
    require(!masked.contains(value), "a token's value is masked, whatever stands around it");
    return 0;
}
