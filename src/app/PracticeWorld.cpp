// SPDX-License-Identifier: Apache-2.0
#include "app/PracticeWorld.h"

namespace bram
{

using namespace Qt::StringLiterals;

std::expected<std::unique_ptr<PracticeWorld>, Error> PracticeWorld::create(const Clock &clock)
{
    std::unique_ptr<PracticeWorld> world(new PracticeWorld(clock));
    if (!world->m_folder.isValid()) {
        return std::unexpected(
            Error {u"Practice mode needs a temporary folder: "_s + world->m_folder.errorString()});
    }
    if (const auto listening = world->m_gateway.listen(); !listening) {
        return std::unexpected(listening.error());
    }
    return world;
}

PracticeWorld::PracticeWorld(const Clock &clock)
    : m_gateway({}, clock)
    , m_session(m_gateway, clock, {})
{
}

Places PracticeWorld::places() const
{
    return Places::ofPractice(m_folder.path(), m_gateway.url().toString());
}

} // namespace bram
