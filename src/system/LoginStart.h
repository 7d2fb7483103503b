// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "model/Error.h"

#include <QString>

#include <expected>

namespace bram
{

/// Whether the desktop starts this program when its user logs in. Implemented for Linux by `AutostartEntry`;
/// main thread. What is on the disk counts, whoever has put it there; nothing is kept here.
class LoginStart
{
public:
    struct State {
        bool isOn = false;
        QString otherProgram {}; ///< when on, and another program than this one is started: which
        QString problem {}; ///< why it cannot be told; empty usually

        bool operator==(const State &) const = default;
    };

    virtual ~LoginStart() = default;

    virtual State state() const = 0;
    /// On: this program, whatever was started before. An error is one line and leaves what was there.
    virtual std::expected<void, Error> setOn(bool isOn) = 0;
};

} // namespace bram
