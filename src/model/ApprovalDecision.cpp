// SPDX-License-Identifier: Apache-2.0
#include "model/ApprovalDecision.h"

#include "model/RawText.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array rows {
    RawTextRow {ApprovalDecision::AllowOnce, "allow-once"_L1},
    RawTextRow {ApprovalDecision::AllowAlways, "allow-always"_L1},
    RawTextRow {ApprovalDecision::Deny, "deny"_L1},
};
} // namespace

QString rawText(ApprovalDecision decision)
{
    return toRawText(rows, decision);
}

std::optional<ApprovalDecision> approvalDecisionFromRawText(QStringView text)
{
    return fromRawText(rows, text);
}

} // namespace bram
