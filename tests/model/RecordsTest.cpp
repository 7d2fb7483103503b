// SPDX-License-Identifier: Apache-2.0
#include "model/ActivityEntry.h"
#include "model/ApprovalDecision.h"
#include "model/ApprovalHistoryEntry.h"
#include "model/ApprovalItem.h"
#include "model/DecisionInputSource.h"
#include "model/IndicatorState.h"
#include "model/TelegramTokenSource.h"
#include "model/TextRules.h"

#include <QLocale>
#include <QSet>
#include <QTextBoundaryFinder>

#include <gtest/gtest.h>

namespace bram
{

using namespace Qt::StringLiterals;

namespace
{
/// Every value survives its raw text, the raw texts are the given ones, and no near miss is accepted.
template<typename Enum, typename FromRawText>
void expectVocabulary(const QList<std::pair<Enum, QString>> &words, FromRawText fromRawText,
                      const QStringList &strangers)
{
    for (const auto &[value, word] : words) {
        EXPECT_EQ(rawText(value), word);
        EXPECT_EQ(fromRawText(word), value) << qPrintable(word);
        for (const QString &miss : {word.toUpper(), word + u' ', u' ' + word, word.chopped(1)}) {
            EXPECT_EQ(fromRawText(miss), std::nullopt) << qPrintable(miss);
        }
    }
    for (const QString &stranger : strangers + QStringList {QString(), u"unknown"_s}) {
        EXPECT_EQ(fromRawText(stranger), std::nullopt) << qPrintable(stranger);
    }
}
} // namespace

TEST(Records, EachVocabularyKnowsOnlyItsOwnWords)
{
    expectVocabulary<ApprovalDecision>({{ApprovalDecision::AllowOnce, u"allow-once"_s},
                                        {ApprovalDecision::AllowAlways, u"allow-always"_s},
                                        {ApprovalDecision::Deny, u"deny"_s}},
                                       approvalDecisionFromRawText,
                                       {u"allowOnce"_s, u"allowAlways"_s, u"allow"_s});
    using State = ApprovalHistoryState;
    expectVocabulary<State>({{State::Pending, u"pending"_s},
                             {State::AllowOnce, u"allowOnce"_s},
                             {State::AllowAlways, u"allowAlways"_s},
                             {State::Deny, u"deny"_s},
                             {State::Canceled, u"canceled"_s},
                             {State::Resolved, u"resolved"_s}},
                            approvalHistoryStateFromRawText,
                            {u"allow-once"_s, u"allow-always"_s, u"cancelled"_s});
    using Source = TelegramTokenSource;
    expectVocabulary<Source>({{Source::Missing, u"missing"_s},
                              {Source::Environment, u"environment"_s},
                              {Source::Keychain, u"keychain"_s},
                              {Source::BrackwenConfig, u"brackwenConfig"_s}},
                             telegramTokenSourceFromRawText, {u"config"_s});
    EXPECT_EQ(rawText(IndicatorState::Green) + rawText(IndicatorState::Yellow)
                  + rawText(IndicatorState::Red) + rawText(IndicatorState::Gray),
              u"greenyellowredgray"_s);
    EXPECT_EQ(rawText(DecisionInputSource::CallbackButton), u"telegram-callback"_s);
    EXPECT_EQ(rawText(DecisionInputSource::CommandMessage), u"telegram-command"_s);
}

TEST(Records, RequestAsText)
{
    ApprovalItem item {u"a1"_s, u"ls -la"_s, u"main"_s, 0, 0};
    EXPECT_EQ(item.pretty(), u"approval id: a1\nagent: main\ncmd: ls -la"_s);
    item.agentId = u""_s;
    EXPECT_EQ(item.pretty(), u"approval id: a1\ncmd: ls -la"_s);
    const ApprovalItem misleading {u"a\n1"_s, u"ls\n\x1b[2J"_s, u"m\x1b"_s};
    EXPECT_EQ(misleading.pretty(),
              u"approval id: a⟨U+000A⟩1\nagent: m⟨U+001B⟩\ncmd: ls\n⟨U+001B⟩[2J\n(not as it would "
              "run: what could mislead stands as ⟨…⟩)"_s);
    item.agentId.reset();
    EXPECT_EQ(item.pretty(), u"approval id: a1\ncmd: ls -la"_s);
}

TEST(Records, EqualityAndHashTakeEveryFieldIntoAccount)
{
    const ApprovalItem item {u"a1"_s, u"ls"_s, u""_s, 1, 2};
    const ApprovalItem others[] = {
        {u"a2"_s, u"ls"_s, u""_s, 1, 2}, {u"a1"_s, u"l"_s, u""_s, 1, 2},
        {u"a1"_s, u"ls"_s, {}, 1, 2},    {u"a1"_s, u"ls"_s, u""_s, 0, 2},
        {u"a1"_s, u"ls"_s, u""_s, 1, 0},
    };
    QSet<ApprovalItem> set {item, item};
    for (const ApprovalItem &other : others) {
        EXPECT_NE(item, other);
        set.insert(other);
    }
    EXPECT_EQ(set.size(), 6);

    const auto at = QDateTime::fromMSecsSinceEpoch(1'000);
    const ApprovalHistoryEntry row {u"a1-1000"_s, u"a1"_s, u"ls"_s, ApprovalHistoryState::Pending,
                                    at};
    ApprovalHistoryEntry later = row;
    later.id = u"a1-1001"_s;
    EXPECT_NE(row, later);
    EXPECT_EQ((QSet<ApprovalHistoryEntry> {row, later, row}).size(), 2);
}

TEST(Records, Expiry)
{
    struct Row {
        qint64 expiresAtMs;
        qint64 nowMs;
        bool expired;
    };
    for (const Row &row : {Row {1000, 999, false}, Row {1000, 1000, true}, Row {1000, 1001, true},
                           Row {0, 5000, false}, Row {-1, 5000, false}, Row {1, 5000, true}}) {
        const ApprovalItem item {u"a"_s, u"ls"_s, {}, 1, row.expiresAtMs};
        EXPECT_EQ(isApprovalExpired(item, row.nowMs), row.expired)
            << row.expiresAtMs << ' ' << row.nowMs;
    }
}

TEST(Records, TimestampIsLocalWithoutYear)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt)); // other digits, were it used
    ApprovalHistoryEntry entry;
    entry.updatedAt = QDateTime(QDate(2024, 3, 5), QTime(7, 8, 9));
    EXPECT_EQ(entry.timestampText(), u"03-05 07:08:09"_s);
    entry.updatedAt = entry.updatedAt.addSecs(12 * 3600).toUTC();
    EXPECT_EQ(entry.timestampText(), u"03-05 19:08:09"_s);
    QLocale::setDefault(before);
}

TEST(TextRules, TrimmedOrAbsent)
{
    EXPECT_EQ(trimmedOrAbsent(u" \n x y\t"_s), u"x y"_s);
    EXPECT_EQ(trimmedOrAbsent(u" \n\t"_s), std::nullopt);
    EXPECT_EQ(trimmedOrAbsent(QString()), std::nullopt);
    EXPECT_EQ(trimmedOrAbsent(std::optional<QString>()), std::nullopt);
    EXPECT_EQ(trimmedOrAbsent(std::optional(u" a "_s)), u"a"_s);
}

TEST(TextRules, ALongTextIsCutWhereAShortOneIs)
{
    // Characters of one to eight units, so that each kind stands where the text is looked at in parts.
    const QStringList kinds {u"a"_s,
                             u"e\u0301\u0302"_s,
                             u"\U0001D157\U0001D165"_s,
                             u"\U0001F1E9\U0001F1EA"_s,
                             u"\U0001F469\u200D\U0001F467"_s,
                             u"\u1112\u1161\u11AB"_s};
    QString text;
    for (int i = 0; i < 300; ++i) {
        text += kinds.at(i * 7 % kinds.size()) + (i % 11 == 0 ? QString(90, u'\u0301') : QString());
    }
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    for (qsizetype count = 0; count < 290; ++count) {
        ASSERT_EQ(firstCharacters(text, count), text.first(finder.position())) << count;
        finder.toNextBoundary();
    }
}

TEST(TextRules, CountsWhatAReaderCounts)
{
    struct Row {
        QString text;
        qsizetype characters;
        QString firstTwo;
    };
    const Row rows[] = {
        {u""_s, 0, u""_s},
        {u"a"_s, 1, u"a"_s},
        {u"abc"_s, 3, u"ab"_s},
        {u"e\u0301e\u0301x"_s, 3, u"e\u0301e\u0301"_s},
        {u"\u1112\u1161\u11ab글x"_s, 3, u"\u1112\u1161\u11ab글"_s},
        {u"👩\u200d💻👍🏽!"_s, 3, u"👩\u200d💻👍🏽"_s},
        {u"a\r\nb"_s, 3, u"a\r\n"_s},
        {u"🇰🇷🇰🇷🇰🇷"_s, 3, u"🇰🇷🇰🇷"_s},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(characterCount(row.text), row.characters) << qPrintable(row.text);
        EXPECT_EQ(firstCharacters(row.text, 2), row.firstTwo) << qPrintable(row.text);
        EXPECT_EQ(firstCharacters(row.text, row.characters), row.text) << qPrintable(row.text);
        EXPECT_EQ(firstCharacters(row.text, 0), QString()) << qPrintable(row.text);
    }
}

} // namespace bram
