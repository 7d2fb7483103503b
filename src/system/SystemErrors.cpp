// SPDX-License-Identifier: Apache-2.0
#include "system/SystemErrors.h"

#include <cstring>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// The locale of the process but for its messages; made once, as each one costs reading files.
locale_t withEnglishMessages()
{
    static const locale_t made = ::newlocale(LC_MESSAGES_MASK, "C", ::duplocale(LC_GLOBAL_LOCALE));
    return made;
}
} // namespace

QString systemErrorText(int errorNumber)
{
    const char *text = ::strerrordesc_np(errorNumber);
    return text != nullptr ? QString::fromLatin1(text) : u"Unknown error %1"_s.arg(errorNumber);
}

EnglishErrorTexts::EnglishErrorTexts()
    : m_before(::uselocale(withEnglishMessages()))
{
}

EnglishErrorTexts::~EnglishErrorTexts()
{
    ::uselocale(m_before);
}

} // namespace bram
