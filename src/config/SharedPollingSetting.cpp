// SPDX-License-Identifier: Apache-2.0
#include "config/SharedPollingSetting.h"

#include "config/ValueParsers.h"
#include "system/Preferences.h"

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
const QString allowSharedBotPollingDefaultsKey = u"telegram.allow-shared-bot-polling"_s;
} // namespace

SharedPollingSetting::SharedPollingSetting(Preferences &preferences)
    : m_preferences(preferences)
    , m_isAllowed(parseBool(preferences.text(allowSharedBotPollingDefaultsKey).value_or(QString()))
                      .value_or(false))
{
}

bool SharedPollingSetting::setAllowSharedBotPollingOverride(bool isAllowed)
{
    if (isAllowed == m_isAllowed) {
        return true;
    }
    m_isAllowed = isAllowed;
    Q_EMIT allowSharedBotPollingOverrideChanged(isAllowed);
    m_preferences.setText(allowSharedBotPollingDefaultsKey, isAllowed ? u"true"_s : u"false"_s);
    return m_preferences.save();
}

} // namespace bram
