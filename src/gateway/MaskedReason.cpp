// SPDX-License-Identifier: Apache-2.0
#include "gateway/MaskedReason.h"

#include "audit/Redaction.h"
#include "model/TextRules.h"

namespace bram
{

namespace
{
constexpr qsizetype maxReasonCharacters = 4096;
} // namespace

QString maskedReason(const QString &reason)
{
    return redacted(firstCharacters(reason, maxReasonCharacters));
}

} // namespace bram
