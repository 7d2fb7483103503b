// SPDX-License-Identifier: Apache-2.0
#include "allowlist/AlwaysAllowFixture.h"

#include <QHash>
#include <QProcess>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using Verdict = AlwaysAllowVerdict;

namespace
{
/// What bash makes of a command: the words of each call of `w`.
QByteArray readByShell(const QString &command, const QString &folder)
{
    QProcess shell;
    shell.setWorkingDirectory(folder); // for what `>` makes
    shell.start(
        u"bash"_s,
        {u"-c"_s,
         u"shopt -s extglob; trap wait EXIT\nw() { printf '<%s>' \"$@\"; echo; }\n"_s + command});
    EXPECT_TRUE(shell.waitForFinished());
    return shell.readAllStandardOutput();
}
} // namespace

TEST_F(AlwaysAllow, AnswersOnlyWhatAShellReadsTheSame)
{
    const QStringList commands {
        u"w a b"_s,
        u"w  a\tb \n"_s,
        u"w a\nb"_s,
        u"w a\n b"_s,
        u"w a\r\nb"_s,
        u"w a\\ b"_s,
        u"w a\\  b"_s,
        u"w a \\ b"_s,
        u"w \"a b\""_s,
        u"w \"a  b\""_s,
        u"w 'a\tb'"_s,
        u"w 'a\nb'"_s,
        u"w $'a b'"_s,
        u"w dir"_s,
        u"w dir\\"_s,
        u"w dir\\ "_s,
        u"w dir\\\t"_s,
        u"w dir\\\n"_s,
        u"w dir\r"_s,
        u"w a\u00a0b"_s,
        u"w a\u2028b"_s,
        u"w a\vb"_s,
        u"w dir\u3000"_s,
        u"w a \\\n b"_s,
        u"w a # b c"_s,
        u"w a #\nw b c"_s,
        u"w a # b\nw c"_s,
        u"v=; IFS=,; x=${v:-a b}; w $x"_s,
        u"v=; IFS=,; x=${v:-a  b}; w $x"_s,
        u"w +(a b)"_s,
        u"w +(a  b)"_s,
        u"declare -A m; m[a b]=1; IFS=,; w ${!m[@]}"_s,
        u"declare -A m; m[a  b]=1; IFS=,; w ${!m[@]}"_s,
        u"w <<E\na b\nE"_s,
        u"while read -r l; do w \"$l\"; done <<E\na b\nE\n"_s,
        u"while read -r l; do w \"$l\"; done <<E\na  b\nE\n"_s,
    };
    QHash<QString, QByteArray> readings;
    for (const QString &command : commands) {
        readings.insert(command, readByShell(command, home.path()));
    }
    for (const QString &remembered : commands) {
        list->clearApp();
        list->rememberAlwaysAllow(remembered);
        for (const QString &asked : commands) {
            const bool isAllowed = list->verdict(asked) == Verdict::Allowed;
            EXPECT_TRUE(isAllowed || asked != remembered) << qPrintable(asked);
            EXPECT_TRUE(!isAllowed || readings[asked] == readings[remembered])
                << qPrintable(remembered) << " answers for " << qPrintable(asked);
        }
    }
    list->rememberAlwaysAllow(commands.constFirst());
    EXPECT_EQ(list->verdict(u"\tw  a \t b\n"_s), Verdict::Allowed);

    int folded = 0;
    for (char character = '!'; character <= '~'; ++character) {
        const QString one = u"w x"_s + QLatin1Char(character) + u"y a b"_s;
        const QString other = QString(one).replace(u" a "_s, u"  a\t "_s);
        const bool isFolded = commandForm(one) == commandForm(other);
        EXPECT_TRUE(!isFolded || readByShell(one, home.path()) == readByShell(other, home.path()))
            << character;
        folded += isFolded ? 1 : 0;
    }
    EXPECT_GT(folded, 80);
}

TEST_F(AlwaysAllow, EachExactTextIsAllowedByItselfAndAllGoTogether)
{
    const QString one = u"cd src && \\\n make 'a  b'"_s;
    const QString other = u"cd src && \\\n make 'a b'"_s;
    list->rememberAlwaysAllow(one);
    EXPECT_EQ(list->verdict(one), Verdict::Allowed);
    EXPECT_EQ(list->verdict(other), Verdict::NotExact);
    list->rememberAlwaysAllow(other);
    restart();
    EXPECT_EQ(list->verdict(one), Verdict::Allowed);
    EXPECT_EQ(list->verdict(other), Verdict::Allowed);
    ASSERT_EQ(list->entries().size(), 1);
    list->removeAlwaysAllowEntryFromAppOnly({entry(one)});
    restart();
    list->rememberAlwaysAllow(other);
    EXPECT_EQ(list->verdict(one), Verdict::NotExact);
    list->clearApp();
    restart();
    EXPECT_EQ(list->verdict(other), Verdict::Unknown);
    EXPECT_EQ(preferences->textMap(formsKey), (QMap<QString, QString> {}));
}

TEST_F(AlwaysAllow, ThePlatformsTextAnswersForItselfOnceItIsAdded)
{
    platformAllows({"cp 'c  d' e", "cp c\\nls d", "make it"});
    list->reload(AlwaysAllowScope::IncludeRegistered);
    list->addAlwaysAllowEntryToAppList(list->entries());
    restart();
    for (const auto &[command, expected] : {std::pair(u"cp 'c  d' e"_s, Verdict::Allowed),
                                            std::pair(u"cp 'c d' e"_s, Verdict::NotExact),
                                            std::pair(u"cp c\nls d"_s, Verdict::Allowed),
                                            std::pair(u"cp c ls d"_s, Verdict::NotExact),
                                            std::pair(u"make\tit"_s, Verdict::Allowed)}) {
        EXPECT_EQ(list->verdict(command), expected) << qPrintable(command);
    }
}

TEST_F(AlwaysAllow, WhatIsKnownExactlyOutlivesABackup)
{
    const QStringList exact {u"rm a\nls b"_s, u"rm 'a  b'"_s, u"ls\r"_s, u"make it"_s};
    for (const QString &command : exact) {
        list->rememberAlwaysAllow(command);
    }
    const auto backup
        = parseAlwaysAllowBackup(alwaysAllowBackupText(list->entries(), u"Head"_s, 0));
    list->clearApp();
    EXPECT_EQ(list->restore(backup), exact.size());
    restart();
    for (const QString &command : exact) {
        EXPECT_EQ(list->verdict(command), Verdict::Allowed) << qPrintable(command);
    }
    for (const QString &command : {u"rm a ls b"_s, u"rm 'a b'"_s, u"ls"_s}) {
        EXPECT_EQ(list->verdict(command), Verdict::NotExact) << qPrintable(command);
    }
}

TEST_F(AlwaysAllow, WhatEarlierReleasesKeptIsAskedOnceMoreUnlessItIsPlain)
{
    // What they remembered, whether they marked it, and what is answered now.
    const struct {
        QString kept;
        QString preview;
        bool isMarked;
        QString asked;
        Verdict expected;
    } rows[] {
        {u"git push"_s, u"git …"_s, false, u"git  push"_s, Verdict::Allowed},
        {u"git 'a  b'"_s, u"git …"_s, false, u"git 'a b'"_s, Verdict::NotExact},
        {u"git 'a  b'"_s, u"git 'a  b'"_s, false, u"git 'a b'"_s, Verdict::NotExact},
        {u"git 'a  b'"_s, u"git 'a  b'"_s, false, u"git 'a  b'"_s, Verdict::Allowed},
        {u"git\npush"_s, u"git …"_s, true, u"git push"_s, Verdict::NotExact},
        {u"git\npush"_s, u"git …"_s, true, u"git\npush"_s, Verdict::NotExact},
    };
    const auto keep = [&](const auto &row) {
        preferences->remove(formsKey);
        preferences->setTextList(digestsKey, {digestOf(row.kept)});
        preferences->setTextMap(previewsKey, {{digestOf(row.kept), row.preview}});
        preferences->setTextList(lineBreaksKey,
                                 row.isMarked ? QStringList(digestOf(row.kept)) : QStringList());
    };
    for (const auto &row : rows) {
        keep(row);
        ASSERT_TRUE(preferences->save());
        restart();
        EXPECT_EQ(list->verdict(row.asked), row.expected)
            << qPrintable(row.kept) << " and " << qPrintable(row.asked);
        EXPECT_EQ(entry(row.kept).isAskedOnceMore(), row.isMarked);
        list->rememberAlwaysAllow(row.kept);
        restart();
        EXPECT_EQ(list->verdict(row.kept), Verdict::Allowed) << "it learns";
    }
    // Restored from a backup of theirs, nothing says what the digest was made of.
    list->clearApp();
    list->restore(
        parseAlwaysAllowBackup(u"ID: "_s + digestOf(u"git push"_s) + u"\nCommand: git …"_s));
    EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact);
    EXPECT_TRUE(entry(u"git push"_s).isAskedOnceMore());
}

TEST_F(AlwaysAllow, MalformedKnowledgeMakesItAsk)
{
    const QString digest = digestOf(u"git push"_s);
    for (const QString &value :
         {u"x"_s, u"["_s, u""_s, u"[\"plain\"]"_s, u"{\"%1\":1}"_s.arg(digest),
          u"{\"%1\":\"Plain plainer 12\"}"_s.arg(digest), u"{}"_s,
          u"{\"plain\":\"%1\"}"_s.arg(digest)}) {
        list->rememberAlwaysAllow(u"git push"_s);
        preferences->setText(formsKey, value);
        ASSERT_TRUE(preferences->save());
        restart();
        EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact) << qPrintable(value);
    }
    list->rememberAlwaysAllow(u"git push"_s);
    preferences->remove(formsKey);
    preferences->setText(lineBreaksKey, u"["_s);
    restart();
    EXPECT_EQ(list->verdict(u"git push"_s), Verdict::NotExact);
    EXPECT_EQ(log.lines().filter(u"line-break-digests is malformed"_s).size(), 1);
}
