// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayConfig.h"
#include "model/IndicatorState.h"

#include <QString>

#include <optional>

namespace bram
{

/// Whether the credentials in use are those of the platform's configuration file, the reference.
enum class TokenSyncState {
    Checking, ///< before the first comparison
    Matching,
    Mismatch, ///< they differ, or a reload found nothing
    NoReference, ///< the configuration file has no gateway credentials
    Resynchronised, ///< a reload has just taken the file's credentials
    RepeatedlyFailing, ///< the gateway refuses them again and again
};

/// The state's fixed Korean text.
QString tokenStatusText(TokenSyncState state);

/// The colour of the dot next to it.
IndicatorState tokenIndicator(TokenSyncState state);

/// Compares the trimmed texts, case-sensitive: Matching, Mismatch or, without a reference,
/// NoReference. Credentials that the gateway accepts but the file does not hold are a mismatch on
/// purpose.
TokenSyncState tokenSyncState(const GatewayCredentials &inUse,
                              const std::optional<GatewayCredentials> &reference);

} // namespace bram
