// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "gateway/GatewayFrames.h"

#include <memory>
#include <optional>

namespace bram
{

/// Reads the frames that a request brings with it, in their usual form, many times quicker than `parseFrame`.
/// It is sure of what it reads. Whatever is unusual is nothing here: a number with a fraction, a key that
/// comes twice, half a surrogate pair, a request of nobody, a failed answer, any other event, a frame that is
/// not JSON. That is left to `parseFrame`, which alone says what frames mean; what is read here reads alike
/// there (but for a frame in which some number that does not matter is too small for a double, which only the
/// general parser refuses). Keeps its buffers from frame to frame.
class UsualFrameReader
{
public:
    UsualFrameReader();
    ~UsualFrameReader();
    Q_DISABLE_COPY_MOVE(UsualFrameReader)

    std::optional<IncomingFrame> read(const QByteArray &utf8);

private:
    struct Parser;
    std::unique_ptr<Parser> m_parser;
};

} // namespace bram
