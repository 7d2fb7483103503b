// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Descriptors.h"
#include "monitor/MonitorFixture.h"
#include "monitor/OperatorChat.h"
#include "ui/terminal/LineSource.h"
#include "ui/terminal/TerminalFrontEnd.h"
#include "ui/terminal/TerminalOutput.h"

namespace bram::test
{

/// An operator who types when the test says so.
class ScriptedLines final : public LineSource
{
public:
    void start() override { }
    void readWaiting() override
    {
        for (const QString &line : std::exchange(waiting, {})) {
            deliverLine(line, moment());
        }
    }
    void type(const QString &line) { deliverLine(line, moment()); }
    void typeBegunAt(DialogueMoment begunAt, const QString &line) { deliverLine(line, begunAt); }
    void end() { deliverEnd(); }

    QStringList waiting; ///< typed, and not read by the program yet
};

/// A practice chat with one button and one key.
class ScriptedChat final : public OperatorChat
{
public:
    QList<Message> messages() const override
    {
        return {{.isFromBot = true,
                 .text = QStringLiteral("pending (1)\n1. ls"),
                 .buttons = {{{.number = 1, .text = QStringLiteral("Allow")}}}},
                {.isFromBot = false, .text = QStringLiteral("hello")}};
    }
    ButtonRows keys() const override
    {
        return {{{.number = 2, .text = QStringLiteral("/approve")}}};
    }
    bool press(int number) override
    {
        pressed.append(number);
        return number <= 2;
    }
    void say(const QString &text) override { said.append(text); }

    QList<int> pressed;
    QStringList said;
};

/// The front-end over the real core, with a pipe for its output.
class FrontEndFixture : public MonitorFixture
{
protected:
    FrontEndFixture()
    {
        makeCore();
        frontEnd = std::make_unique<TerminalFrontEnd>(
            TerminalFrontEnd::Collaborators {.monitor = monitor(),
                                             .bulkAllow = core->bulkAllow(),
                                             .exercises = core->exercises(),
                                             .record = core->record(),
                                             .alwaysAllow = core->alwaysAllow(),
                                             .telegram = core->telegram(),
                                             .practiceChat = &chat,
                                             .language = core->language(),
                                             .allowPartlyShown = core->allowPartlyShown(),
                                             .unencryptedGateway = core->unencryptedGateway(),
                                             .sharedPolling = core->sharedPolling(),
                                             .tasks = core->tasks(),
                                             .clock = clock,
                                             .input = input,
                                             .output = output});
        QObject::connect(frontEnd.get(), &TerminalFrontEnd::quitRequested, frontEnd.get(),
                         [this] { ++quits; });
        frontEnd->start();
        monitor().start();
        EXPECT_TRUE(says(QStringLiteral("Gateway connected\n")));
    }
    ~FrontEndFixture() override { frontEnd.reset(); }

    /// Waits until the output holds `text` beyond what an earlier call has found.
    [[nodiscard]] bool says(const QString &text)
    {
        const bool said = waitUntil(
            [&] {
                shown += QString::fromUtf8(pipe.received());
                const qsizetype at = shown.indexOf(text, seen);
                seen = at < 0 ? seen : at + text.size();
                return at >= 0;
            },
            3000);
        EXPECT_TRUE(said) << qPrintable(text) << "\nis missing after\n"
                          << qPrintable(shown.sliced(seen));
        return said;
    }
    void typeAndHear(const QString &line, const QString &answer)
    {
        input.type(line);
        EXPECT_TRUE(says(answer)) << qPrintable(line);
    }
    /// Everything said once all that was typed has been answered.
    QString allSaid()
    {
        typeAndHear(QStringLiteral("no-such-command"),
                    QStringLiteral("Unknown command: no-such-command"));
        return shown;
    }
    void simulate(const ApprovalItem &item)
    {
        monitor().handleGatewayEvent(ApprovalRequested {item});
    }
    void announceAndSee(const char *id, const QString &head, const char *command = "ls -la")
    {
        gateway.announce(item(id, command));
        EXPECT_TRUE(says(head)) << id;
    }

    ScriptedChat chat;
    OutputPipe pipe;
    TerminalOutput output {pipe.inner()};
    ScriptedLines input;
    std::unique_ptr<TerminalFrontEnd> frontEnd;
    QString shown;
    qsizetype seen = 0;
    int quits = 0;
};

} // namespace bram::test
