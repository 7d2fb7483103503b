// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QString>

#include <locale.h>

namespace bram
{

/// What an errno means, in English whatever the locale is: it goes into logs and records.
QString systemErrorText(int errorNumber);

/// While it lives, the C library tells this thread of errors in English, also where Qt asks it.
class EnglishErrorTexts
{
public:
    EnglishErrorTexts();
    ~EnglishErrorTexts();
    Q_DISABLE_COPY_MOVE(EnglishErrorTexts)

private:
    const locale_t m_before;
};

} // namespace bram
