// SPDX-License-Identifier: Apache-2.0
#include "model/ApprovalHistoryEntry.h"

#include "model/RawText.h"

#include <QLocale>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
constexpr std::array rows {
    RawTextRow {ApprovalHistoryState::Pending, "pending"_L1},
    RawTextRow {ApprovalHistoryState::AllowOnce, "allowOnce"_L1},
    RawTextRow {ApprovalHistoryState::AllowAlways, "allowAlways"_L1},
    RawTextRow {ApprovalHistoryState::Deny, "deny"_L1},
    RawTextRow {ApprovalHistoryState::Canceled, "canceled"_L1},
    RawTextRow {ApprovalHistoryState::Resolved, "resolved"_L1},
};
} // namespace

QString rawText(ApprovalHistoryState state)
{
    return toRawText(rows, state);
}

std::optional<ApprovalHistoryState> approvalHistoryStateFromRawText(QStringView text)
{
    return fromRawText(rows, text);
}

bool isOwnDecision(ApprovalHistoryState state)
{
    return state == ApprovalHistoryState::AllowOnce || state == ApprovalHistoryState::AllowAlways
        || state == ApprovalHistoryState::Deny;
}

QString ApprovalHistoryEntry::timestampText() const
{
    static const QLocale korean(QLocale::Korean, QLocale::SouthKorea);
    return korean.toString(updatedAt.toLocalTime(), u"MM-dd HH:mm:ss");
}

size_t qHash(const ApprovalHistoryEntry &entry, size_t seed) noexcept
{
    return qHashMulti(seed, entry.id, entry.approvalId, entry.command, qToUnderlying(entry.state),
                      entry.updatedAt, qToUnderlying(entry.maker), entry.isCut);
}

} // namespace bram
