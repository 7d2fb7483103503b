// SPDX-License-Identifier: Apache-2.0
#include "config/SharedPollingSetting.h"

namespace bram
{

using namespace Qt::StringLiterals;

SharedPollingSetting::SharedPollingSetting(Preferences &preferences)
    : m_switch(preferences, u"telegram.allow-shared-bot-polling"_s)
{
    connect(&m_switch, &StoredSwitch::changed, this,
            &SharedPollingSetting::allowSharedBotPollingOverrideChanged);
}

} // namespace bram
