// SPDX-License-Identifier: Apache-2.0
#include "system/linux/SyslogLog.h"

#include <QByteArray>
#include <QString>

#include <gtest/gtest.h>

#include <unistd.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

/// What `write` sends to standard error.
QByteArray written(QStringView line)
{
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    const int before = ::dup(STDERR_FILENO);
    EXPECT_GE(::dup2(ends[1], STDERR_FILENO), 0);
    SyslogLog(SyslogLog::StandardError).write(line);
    EXPECT_GE(::dup2(before, STDERR_FILENO), 0);
    ::close(before);
    ::close(ends[1]);
    QByteArray bytes(4096, '\0');
    bytes.truncate(::read(ends[0], bytes.data(), bytes.size()));
    ::close(ends[0]);
    return bytes;
}

TEST(SyslogLog, OneCallIsOneLineThatReadsAsItIsWritten)
{
    const struct {
        QString line;
        QByteArray expected;
    } cases[] = {
        {u""_s, "\n"},
        {u"[Brackwen] state ~ 100% {}"_s, "[Brackwen] state ~ 100% {}\n"},
        {u"a\r\n\tb\x7f"_s + QChar(0) + u"c"_s, "a   b  c\n"},
        {u"\x1b[2J"_s, " [2J\n"},
        {u"a\u0085b\u009bc"_s, "a b c\n"},
        {u"a\u2028b\u2029c"_s, "a b c\n"},
        {u"a\u202eb\u2066c\u200bd\ufeff"_s, "a b c d \n"},
        {u"a\U000E0041b"_s, "a b\n"}, // beyond the first plane, one blank
        {u"결제 ⟨é⟩ 🚀"_s, "결제 ⟨é⟩ 🚀\n"},
        {QString(QChar(0xd800)) + u"x"_s, "\xef\xbf\xbdx\n"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(written(c.line), c.expected) << c.expected.constData();
    }
}

} // namespace
} // namespace bram
