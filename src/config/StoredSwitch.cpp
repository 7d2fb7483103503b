// SPDX-License-Identifier: Apache-2.0
#include "config/StoredSwitch.h"

#include "config/ValueParsers.h"
#include "system/Preferences.h"

#include <utility>

namespace bram
{

using namespace Qt::StringLiterals;

StoredSwitch::StoredSwitch(Preferences &preferences, QString key)
    : m_preferences(preferences)
    , m_key(std::move(key))
    , m_isOn(parseBool(preferences.text(m_key).value_or(QString())).value_or(false))
{
}

bool StoredSwitch::setOn(bool isOn)
{
    if (isOn == m_isOn) {
        return true;
    }
    m_isOn = isOn;
    Q_EMIT changed(isOn);
    m_preferences.setText(m_key, isOn ? u"true"_s : u"false"_s);
    return m_preferences.save();
}

} // namespace bram
