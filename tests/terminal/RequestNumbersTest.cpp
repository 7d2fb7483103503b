// SPDX-License-Identifier: Apache-2.0
#include "ui/terminal/RequestNumbers.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace bram;
using namespace Qt::StringLiterals;
using Kind = RequestLookup::Kind;

namespace
{
ApprovalItem item(const QString &id, const QString &command = u"ls"_s)
{
    return {.approvalId = id, .command = command, .agentId = std::nullopt};
}

struct LookupRow {
    QString typed;
    Kind kind;
    QString id;
    int goneNumber = 0;
};

void expectLookups(const RequestNumbers &numbers, const QList<ApprovalItem> &pending,
                   DialogueMoment begunAt, std::initializer_list<LookupRow> rows)
{
    for (const LookupRow &row : rows) {
        const RequestLookup found = numbers.find(row.typed, pending, begunAt);
        EXPECT_EQ(found.kind, row.kind) << qPrintable(row.typed);
        EXPECT_EQ(found.item.approvalId, row.id) << qPrintable(row.typed);
        EXPECT_EQ(found.number, row.goneNumber) << qPrintable(row.typed);
    }
}
} // namespace

TEST(RequestNumbers, FindsByNumberIdAndUniqueBeginning)
{
    RequestNumbers numbers;
    QList<ApprovalItem> pending;
    for (const QString &id :
         {u"aaa-1"_s, u"aab-2"_s, u"3x"_s, u"2nd"_s, u"ab"_s, u"abc"_s, u"#1"_s}) {
        pending.append(item(id));
        numbers.show(pending.last(), 1);
    }
    for (const QString &id : {u"not-shown"_s, u"9f00"_s, u"77"_s}) {
        pending.append(item(id));
    }
    expectLookups(numbers, pending, 1,
                  {{u"4"_s, Kind::Found, u"2nd"_s},
                   {u"#4"_s, Kind::Found, u"2nd"_s},
                   {u"1"_s, Kind::Found, u"aaa-1"_s},
                   {u"#1"_s, Kind::Ambiguous, {}}, // a number and another request's id
                   {u"3"_s, Kind::Found, u"3x"_s}, // a number and the beginning of the same request
                   {u"2"_s, Kind::Found, u"aab-2"_s}, // digits are never the beginning of an id
                   {u"9"_s, Kind::Unknown, {}}, // also when no such number was given
                   {u"9f"_s, Kind::Found, u"9f00"_s},
                   {u"77"_s, Kind::Found, u"77"_s}, // but may be a whole one
                   {u"#2"_s, Kind::Found, u"aab-2"_s},
                   {u"aaa-1"_s, Kind::Found, u"aaa-1"_s},
                   {u"aab"_s, Kind::Found, u"aab-2"_s},
                   {u"aa"_s, Kind::Ambiguous, {}},
                   {u"ab"_s, Kind::Found, u"ab"_s}, // whole, though others begin with it
                   {u"not"_s, Kind::Found, u"not-shown"_s},
                   {u"aaa-1x"_s, Kind::Unknown, {}},
                   {u"AAA"_s, Kind::Unknown, {}},
                   {u"0"_s, Kind::Unknown, {}},
                   {u"8"_s, Kind::Unknown, {}},
                   {u"-1"_s, Kind::Unknown, {}},
                   {u"99999999999999999999"_s, Kind::Unknown, {}}});
}

TEST(RequestNumbers, ARequestThatWentAwayLeavesItsNameTaken)
{
    RequestNumbers numbers;
    const QList<ApprovalItem> both {item(u"aaa"_s), item(u"aab"_s)};
    for (const ApprovalItem &shown : both) {
        numbers.show(shown, 5);
    }
    numbers.forget(u"aaa"_s, 10);
    const QList<ApprovalItem> left {both.last()};
    expectLookups(numbers, left, 9, // begun while "aa" could mean both
                  {{u"aa"_s, Kind::Ambiguous, {}},
                   {u"1"_s, Kind::Gone, {}, 1},
                   {u"aaa"_s, Kind::Gone, {}, 1}});
    expectLookups(numbers, left, 10,
                  {{u"aa"_s, Kind::Found, u"aab"_s},
                   {u"#1"_s, Kind::Gone, {}, 1},
                   {u"aaa"_s, Kind::Gone, {}, 1}});

    // Another request's id is the number of the one that went.
    const QList<ApprovalItem> counted {both.last(), item(u"1"_s), item(u"7"_s)};
    numbers.show(counted.at(1), 11);
    expectLookups(numbers, counted, 12,
                  {{u"1"_s, Kind::Gone, {}, 1},
                   {u"#1"_s, Kind::Gone, {}, 1},
                   {u"3"_s, Kind::Found, u"1"_s},
                   {u"7"_s, Kind::Found, u"7"_s}}); // no number yet
    // The id that a number was, too, when the line was begun has gone.
    numbers.show(item(u"2"_s), 13);
    numbers.forget(u"2"_s, 15);
    expectLookups(numbers, left, 14, {{u"2"_s, Kind::Ambiguous, {}}});
    expectLookups(numbers, left, 15, {{u"2"_s, Kind::Found, u"aab"_s}});
    numbers.forget(u"1"_s, 16);

    numbers.show(both.first(), 20); // it comes back: a new request
    EXPECT_EQ(numbers.number(u"aaa"_s), 5);
    expectLookups(numbers, both, 20,
                  {{u"1"_s, Kind::Gone, {}, 1}, {u"5"_s, Kind::Found, u"aaa"_s}});
    numbers.forget(u"never-shown"_s, 30);
    EXPECT_EQ(numbers.number(u"never-shown"_s), std::nullopt);
}

TEST(RequestNumbers, OnlyWhatWasSeenBeforeTheLineWasBegunCanBeAnswered)
{
    RequestNumbers numbers;
    const ApprovalItem first = item(u"a"_s);
    const ApprovalItem second = item(u"a"_s, u"rm -rf /"_s);
    EXPECT_EQ(numbers.answerability(first, 100), Answerability::NotShown);
    numbers.give(u"a"_s);
    EXPECT_EQ(numbers.answerability(first, 100), Answerability::NotShown);
    numbers.show(first, 50);
    EXPECT_EQ(numbers.answerability(first, 49), Answerability::ShownSince);
    EXPECT_EQ(numbers.answerability(first, 50), Answerability::Answerable);
    ApprovalItem later = first;
    later.expiresAtMs += 60'000;
    numbers.show(later, 70); // the same question, and still seen since 50
    EXPECT_EQ(numbers.answerability(first, 50), Answerability::Answerable);
    EXPECT_TRUE(numbers.isShown(later) && !numbers.isChanged(later));
    const ApprovalItem giant = item(u"giant"_s);
    numbers.show(giant, 50, ShownExtent::Part);
    numbers.show(giant, 60, ShownExtent::Whole);
    numbers.show(giant, 70, ShownExtent::Part); // it has been read whole
    EXPECT_EQ(numbers.answerability(giant, 59), Answerability::ShownInPart);
    EXPECT_EQ(numbers.answerability(giant, 60), Answerability::Answerable);
    EXPECT_EQ(numbers.answerability(second, 100), Answerability::ChangedSinceShown);
    EXPECT_TRUE(numbers.isChanged(second) && !numbers.isChanged(first));
    numbers.show(second, 80);
    EXPECT_EQ(numbers.answerability(second, 79), Answerability::ShownSince);
    EXPECT_EQ(numbers.answerability(first, 100), Answerability::ChangedSinceShown);
    EXPECT_EQ(numbers.number(u"a"_s), 1);
    numbers.forget(u"a"_s, 90);
    numbers.show(second, 95);
    EXPECT_EQ(numbers.answerability(second, 94), Answerability::ShownSince);
}
