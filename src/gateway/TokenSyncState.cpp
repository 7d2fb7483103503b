// SPDX-License-Identifier: Apache-2.0
#include "gateway/TokenSyncState.h"

#include "model/TextRules.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
struct Row {
    QStringView text;
    IndicatorState indicator;
};

constexpr Row rowOf(TokenSyncState state)
{
    switch (state) {
    case TokenSyncState::Checking:
        return {u"게이트웨이 토큰 인증: 확인 중", IndicatorState::Gray};
    case TokenSyncState::Matching:
        return {u"게이트웨이 토큰 인증: 일치", IndicatorState::Green};
    case TokenSyncState::Mismatch:
        return {u"게이트웨이 토큰 인증: 불일치", IndicatorState::Red};
    case TokenSyncState::NoReference:
        return {u"게이트웨이 토큰 인증: 기준 토큰 없음", IndicatorState::Gray};
    case TokenSyncState::Resynchronised:
        return {u"게이트웨이 토큰 인증: 재동기화됨 (재연결 중)", IndicatorState::Yellow};
    case TokenSyncState::RepeatedlyFailing:
        return {u"게이트웨이 토큰 인증: 반복 실패 (토큰 갱신 필요)", IndicatorState::Red};
    }
    Q_UNREACHABLE();
}
} // namespace

QString tokenStatusText(TokenSyncState state)
{
    return rowOf(state).text.toString();
}

IndicatorState tokenIndicator(TokenSyncState state)
{
    return rowOf(state).indicator;
}

TokenSyncState tokenSyncState(const GatewayCredentials &inUse,
                              const std::optional<GatewayCredentials> &reference)
{
    if (!reference) {
        return TokenSyncState::NoReference;
    }
    const bool equal = trimmedOrAbsent(inUse.token) == trimmedOrAbsent(reference->token)
        && trimmedOrAbsent(inUse.password) == trimmedOrAbsent(reference->password);
    return equal ? TokenSyncState::Matching : TokenSyncState::Mismatch;
}

} // namespace bram
