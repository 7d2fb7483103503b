// SPDX-License-Identifier: Apache-2.0
#include "system/KeyringSecretStore.h"

#include "support/Doubles.h"
#include "support/Keyring.h"
#include "support/Waiting.h"

#include <qt6keychain/keychain.h>

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

constexpr auto accessibility = SecretAccessibility::WhenUnlockedThisDeviceOnly;
const QString serviceName = u"QX.BrackwenApprovalsMenu.test"_s;
const QString waitingLine = u"[Brackwen] Waiting for the keyring to be unlocked"_s;

class Keyring : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(test::keyring::state(), "unlocked") << "run through tests/desktop/with-keyring";
    }

    std::expected<std::optional<QString>, KeychainError> get(const QString &account)
    {
        return test::waitFor(store.get(serviceName, account));
    }
    bool set(const QString &account, const QString &value)
    {
        return test::waitFor(store.set(serviceName, account, value, accessibility)).has_value();
    }
    bool remove(const QString &account)
    {
        return test::waitFor(store.remove(serviceName, account)).has_value();
    }

    test::RecordingLog log;
    KeyringSecretStore store {log};
};

TEST_F(Keyring, StoresReplacesAndDeletes)
{
    EXPECT_EQ(get(u"token"_s).value(), std::nullopt);
    EXPECT_TRUE(remove(u"token"_s)) << "deleting what is not there succeeds";
    EXPECT_TRUE(set(u"token"_s, u"first"_s));
    const qsizetype items = test::keyring::itemCount();
    EXPECT_EQ(items, 1);
    EXPECT_TRUE(set(u"token"_s, u"둘째 \"=\n"_s));
    EXPECT_TRUE(set(u"token2"_s, u"other"_s));
    EXPECT_EQ(test::keyring::itemCount(), 2)
        << "one item for each account, however often it is set";
    EXPECT_EQ(get(u"token"_s).value(), u"둘째 \"=\n"_s);
    EXPECT_TRUE(remove(u"token"_s));
    EXPECT_EQ(get(u"token"_s).value(), std::nullopt);
    EXPECT_EQ(get(u"token2"_s).value(), u"other"_s);
    EXPECT_TRUE(remove(u"token2"_s));
    EXPECT_EQ(test::keyring::itemCount(), 0);
    EXPECT_EQ(log.lines(), QStringList {});
}

TEST_F(Keyring, ValueThatIsNotUtf8ReadsAsAbsent)
{
    auto *job = new QKeychain::WritePasswordJob(serviceName, QCoreApplication::instance());
    job->setKey(u"bytes"_s);
    job->setBinaryData("ok\xff\xfe");
    bool stored = false;
    QObject::connect(job, &QKeychain::Job::finished, job,
                     [&](QKeychain::Job *done) { stored = done->error() == QKeychain::NoError; });
    job->start();
    ASSERT_TRUE(test::waitUntil([&] { return stored; }));
    EXPECT_EQ(get(u"bytes"_s).value(), std::nullopt);
    EXPECT_TRUE(remove(u"bytes"_s));
}

TEST_F(Keyring, AnswersInTheOrderAsked)
{
    auto one = store.set(serviceName, u"order"_s, u"one"_s, accessibility);
    auto readOne = store.get(serviceName, u"order"_s);
    auto two = store.set(serviceName, u"order"_s, u"two"_s, accessibility);
    auto readTwo = store.get(serviceName, u"order"_s);
    auto removed = store.remove(serviceName, u"order"_s);
    EXPECT_EQ(test::waitFor(std::move(readTwo)).value(), u"two"_s);
    EXPECT_EQ(test::waitFor(std::move(readOne)).value(), u"one"_s);
    EXPECT_TRUE(test::waitFor(std::move(removed)));
    EXPECT_EQ(get(u"order"_s).value(), std::nullopt);
}

TEST_F(Keyring, LockedKeyringBlocksNothingAndIsUsableOnceUnlocked)
{
    ASSERT_TRUE(set(u"locked"_s, u"value"_s));
    test::keyring::lock();
    ASSERT_TRUE(test::keyring::isLocked());
    const test::LoopStall stall;
    // Whoever is asked for the password here refuses.
    const test::keyring::Prompter prompter;
    const auto read = get(u"locked"_s);
    ASSERT_FALSE(read) << "a secret that is held back is not an absent one";
    EXPECT_TRUE(read.error().isLocked);
    EXPECT_EQ(prompter.asked(), 1);
    EXPECT_FALSE(get(u"locked"_s));
    EXPECT_EQ(get(u"never stored"_s).value(), std::nullopt);
    EXPECT_FALSE(set(u"locked"_s, u"overwritten"_s));
    EXPECT_FALSE(set(u"never stored"_s, u"new"_s));
    EXPECT_FALSE(remove(u"locked"_s));
    EXPECT_EQ(prompter.asked(), 1) << "asked once";
    store.askAgain();
    const auto written = test::waitFor(store.set(serviceName, u"new"_s, u"v"_s, accessibility));
    ASSERT_FALSE(written);
    EXPECT_TRUE(written.error().isLocked);
    EXPECT_EQ(prompter.asked(), 2);
    EXPECT_LT(stall.worstMs(), 500);

    test::keyring::unlock();
    ASSERT_FALSE(test::keyring::isLocked());
    EXPECT_EQ(get(u"locked"_s).value(), u"value"_s);
    EXPECT_TRUE(remove(u"locked"_s));
}

TEST_F(Keyring, HungKeyringCostsOneWait)
{
    KeyringSecretStore impatient(log, {.notice = 50ms, .operation = 400ms});
    ASSERT_TRUE(test::waitFor(impatient.set(serviceName, u"hung"_s, u"v"_s, accessibility)));
    const test::LoopStall stall;
    {
        const test::keyring::Frozen frozen;
        auto first = impatient.get(serviceName, u"hung"_s);
        auto behind = impatient.remove(serviceName, u"hung"_s);
        const auto read = test::waitFor(std::move(first));
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().description(), u"the keyring did not answer within 0.4 seconds"_s);
        EXPECT_EQ(log.lines(), QStringList {waitingLine});
        const auto removed = test::waitFor(std::move(behind));
        ASSERT_FALSE(removed);

        auto later = impatient.get(serviceName, u"hung"_s);
        EXPECT_TRUE(later.isReady()) << "a second wait";
        const auto refused = test::waitFor(std::move(later));
        ASSERT_FALSE(refused);
        EXPECT_EQ(refused.error().description(),
                  u"the keyring has not yet answered an earlier request"_s);
    }
    EXPECT_LT(stall.worstMs(), 500);
    // The late answer opens the way again; the deletion that failed was never made.
    std::expected<std::optional<QString>, KeychainError> read;
    ASSERT_TRUE(test::waitUntil([&] {
        read = test::waitFor(impatient.get(serviceName, u"hung"_s));
        return read.has_value();
    }));
    EXPECT_EQ(read.value(), u"v"_s);
    EXPECT_TRUE(test::waitFor(impatient.remove(serviceName, u"hung"_s)));
    EXPECT_EQ(log.lines().size(), 1);
}

TEST_F(Keyring, StopAndDestructionEndEveryWait)
{
    ASSERT_TRUE(set(u"stop"_s, u"v"_s));
    auto closing = std::make_unique<KeyringSecretStore>(log);
    {
        const test::keyring::Frozen frozen;
        auto running = closing->get(serviceName, u"stop"_s);
        auto waiting = closing->set(serviceName, u"stop"_s, u"w"_s, accessibility);
        // Let the first one reach the keyring before the store goes.
        QCoreApplication::processEvents();
        closing->stop();
        auto after = closing->remove(serviceName, u"stop"_s);
        closing.reset();
        EXPECT_FALSE(test::waitFor(std::move(running)));
        EXPECT_FALSE(test::waitFor(std::move(waiting)));
        EXPECT_FALSE(test::waitFor(std::move(after)));
    }
    // The abandoned job comes back to a store that is no more; others go on.
    EXPECT_EQ(get(u"stop"_s).value(), u"v"_s);
    EXPECT_TRUE(remove(u"stop"_s));
}

TEST(NoKeyring, EveryOperationFailsAtOnceWithAReason)
{
    ASSERT_TRUE(test::keyring::state().startsWith("no-"))
        << "run through tests/desktop/with-keyring";
    test::RecordingLog log;
    KeyringSecretStore store(log);
    QElapsedTimer timer;
    timer.start();
    const auto read = test::waitFor(store.get(serviceName, u"a"_s));
    ASSERT_FALSE(read);
    EXPECT_FALSE(read.error().description().isEmpty());
    const auto written = test::waitFor(store.set(serviceName, u"a"_s, u"v"_s, accessibility));
    ASSERT_FALSE(written);
    EXPECT_FALSE(written.error().description().isEmpty());
    EXPECT_FALSE(test::waitFor(store.remove(serviceName, u"a"_s)));
    EXPECT_LT(timer.elapsed(), 3000);
    EXPECT_EQ(log.lines(), QStringList {});
    std::printf("reason: %s / %s\n", qPrintable(read.error().description()),
                qPrintable(written.error().description()));
}

} // namespace
} // namespace bram
