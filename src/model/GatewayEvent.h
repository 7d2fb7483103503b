// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/ApprovalItem.h"

#include <variant>

namespace bram
{

/// A new or repeated request.
struct ApprovalRequested {
    ApprovalItem item;

    bool operator==(const ApprovalRequested &) const = default;
};

/// A request that the gateway reports as decided, wherever that was.
struct ApprovalResolved {
    QString approvalId;

    bool operator==(const ApprovalResolved &) const = default;
};

/// What the gateway client delivers to the coordinator.
using GatewayEvent = std::variant<ApprovalRequested, ApprovalResolved>;

} // namespace bram
