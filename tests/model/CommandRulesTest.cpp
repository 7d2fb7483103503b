// SPDX-License-Identifier: Apache-2.0
#include "model/CommandRules.h"

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

TEST(CommandRules, RatesRequests)
{
    struct Row {
        QString command;
        CommandRisk risk;
    };
    const Row rows[] = {
        {u"sudo ls"_s, CommandRisk::High},
        {u"SUDO ls"_s, CommandRisk::High},
        {u"sudols"_s, CommandRisk::Low},
        {u"sudo"_s, CommandRisk::Low},
        {u"rm -rf build"_s, CommandRisk::High},
        {u"rm -fr build"_s, CommandRisk::Low},
        {u"diskutil erase x"_s, CommandRisk::High},
        {u"mkfs.ext4 /dev/sda"_s, CommandRisk::High},
        {u"dd if=/dev/zero"_s, CommandRisk::High},
        {u"curl -s x"_s, CommandRisk::High},
        {u"wget x"_s, CommandRisk::High},
        {u"cat x | sh"_s, CommandRisk::High},
        {u"cat x | BASH"_s, CommandRisk::High},
        {u"cat x |sh"_s, CommandRisk::Low},
        {u"chmod 777 x"_s, CommandRisk::High},
        {u"chmod 755 x"_s, CommandRisk::Low},
        {u"git Checkout main"_s, CommandRisk::High},
        {u"run-payments"_s, CommandRisk::High},
        {u"stripe listen"_s, CommandRisk::High},
        {u"./송금 1"_s, CommandRisk::High},
        {u"./결제"_s, CommandRisk::High},
        {u"ls -la"_s, CommandRisk::Low},
        {u""_s, CommandRisk::Low},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(commandRiskLevel(row.command), row.risk) << qPrintable(row.command);
    }
    EXPECT_EQ(rawText(CommandRisk::High), u"high"_s);
    EXPECT_EQ(rawText(CommandRisk::Low), u"low"_s);
}

TEST(CommandRules, WarnsAboutStandingPermissions)
{
    for (const QString &command : {u"*"_s,
                                   u"all"_s,
                                   u"ALL"_s,
                                   u"my wildcard rule"_s,
                                   u"sudols"_s,
                                   u"codesign x"_s,
                                   u"security find"_s,
                                   u"spctl"_s,
                                   u"csrutil"_s,
                                   u"launchctl"_s,
                                   u"systemextensionsctl"_s,
                                   u"profiles"_s,
                                   u"chmod 644 x"_s,
                                   u"chown x"_s,
                                   u"xattr"_s,
                                   u"defaults write x"_s,
                                   u"diskutil list"_s,
                                   u"installer"_s,
                                   u"networksetup"_s,
                                   u"ifconfig"_s,
                                   u"pfctl"_s,
                                   u"rm -rf x"_s,
                                   u"cat /etc/hosts"_s,
                                   u"ls /System/x"_s,
                                   u"/Library/LaunchDaemons"_s}) {
        EXPECT_TRUE(isSecuritySensitiveCommand(command)) << qPrintable(command);
    }
    // What rates a request high need not warn about a rule, and the other way round.
    for (const QString &command : {u""_s, u"ls *"_s, u"install all"_s, u"curl x"_s,
                                   u"defaults read"_s, u"cat x | sh"_s, u"cat /etc"_s}) {
        EXPECT_FALSE(isSecuritySensitiveCommand(command)) << qPrintable(command);
    }
}

TEST(CommandRules, PreviewNamesTheProgramOnly)
{
    struct Row {
        QString command;
        QString preview;
    };
    const Row rows[] = {
        {u""_s, u""_s},
        {u" \t\n "_s, u""_s},
        {u"ls"_s, u"ls"_s},
        {u"  ls \n"_s, u"ls"_s},
        {u"ls -la ~/Downloads"_s, u"ls …"_s},
        {u"/usr/bin/git push"_s, u"git …"_s},
        {u"git\n--token=secret"_s, u"git …"_s},
        {u"git\u00A0push"_s, u"git …"_s},
        {u"/usr/bin/"_s, u"bin"_s},
        {u"/"_s, u"/"_s},
        {u"// x"_s, u"/ …"_s},
        {u"./run.sh/ secret/path"_s, u"run.sh …"_s},
        {u"OPENAI_API_KEY=sk-x python3 run.py"_s, u"OPENAI_API_KEY=… python3 …"_s},
        {u"A=1 B='x y' /usr/bin/make"_s, u"A=… B=… make"_s},
        {u"A=\"x $(cat 'a b') \\\" y\" B=`c d`$'it\\'s' C=${D:-e f} ls"_s, u"A=… B=… C=… ls"_s},
        {u"K=a/b"_s, u"K=…"_s},
        {u"K=(a b) x[1]+=y; ls -l"_s, u"K=… x=… ls …"_s},
        {u"A=1 B=2 C=3 D=4 make all"_s, u"A=… B=… C=… make …"_s},
        // What a shell makes of these is not certain, so that nothing that may be a value is shown.
        {u"K='a b c"_s, u"K=… …"_s},
        {u"K=$(x # '\n) b"_s, u"K=… …"_s},
        {u"K=$(case a in a) b;; esac) c"_s, u"K=… …"_s},
        {u"K=a <b c"_s, u"K=… …"_s},
        {u"AWS-KEY=a/b ls"_s, u"AWS-KEY=… …"_s},
        {u"/opt/run=x/y z"_s, u"run=… …"_s},
        {QString(3'900'000, u'x'), QString(200, u'x') + u'…'},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(commandPreview(row.command), row.preview) << qPrintable(row.command.left(80));
        EXPECT_EQ(commandPreview(row.preview), row.preview) << "a preview that is kept";
    }
}

} // namespace bram
