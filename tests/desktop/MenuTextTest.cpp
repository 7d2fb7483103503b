// SPDX-License-Identifier: Apache-2.0
#include "ui/desktop/MenuText.h"
#include "ui/desktop/MenuRows.h"

#include <gtest/gtest.h>

namespace bram
{
namespace
{

using namespace Qt::StringLiterals;

/// "_" marks the next letter and is dropped; two of them are one that is shown.
QString readOnce(const QString &label, bool *hasMark = nullptr)
{
    QString shown;
    for (qsizetype i = 0; i < label.size(); ++i) {
        if (label.at(i) != u'_') {
            shown += label.at(i);
        } else if (i + 1 < label.size() && label.at(i + 1) == u'_') {
            shown += label.at(++i);
        } else if (hasMark != nullptr) {
            *hasMark = true;
        }
    }
    return shown;
}

/// What the toolkit sends: it turns the first "&" that is not the last character into "_".
QString sentToPanel(QString label)
{
    const qsizetype mark = label.indexOf(u'&');
    if (mark >= 0 && mark != label.size() - 1) {
        label[mark] = u'_';
    }
    return label;
}

/// As seen with a panel of GTK: a label with a mark is read a second time.
QString shownByGtkPanel(const QString &label)
{
    bool hasMark = false;
    const QString shown = readOnce(sentToPanel(label), &hasMark);
    return hasMark ? readOnce(shown) : shown;
}

/// What a menu of this toolkit shows.
QString shownByOwnWindow(const QString &label)
{
    QString shown;
    for (qsizetype i = 0; i < label.size(); ++i) {
        if (label.at(i) == u'&' && i + 1 < label.size()) {
            ++i;
        }
        shown += label.at(i);
    }
    return shown;
}

TEST(MenuText, noCharacterOfACommandDisappearsFromALabel)
{
    for (const QString &text :
         {u"make all && rm -rf my_build & wait"_s, u"x&"_s, u"&"_s, u"&&"_s, u"_"_s,
          u"__init__.py"_s, u"_x & y_"_s, u"a_b"_s, u"x & a_b"_s, u"x_&"_s, u"a && b__c_"_s,
          u"_&_q"_s, u"curl 'http://h/?a=1&b=2'"_s, u"plain"_s, u""_s}) {
        const QString label = menuLabel(text, MenuDrawing::TrayHost);
        EXPECT_EQ(shownByGtkPanel(label), text);
        const QString elsewhere = readOnce(sentToPanel(label));
        EXPECT_GE(elsewhere.count(u'_'), text.count(u'_')) << "perhaps doubled, never gone";
        EXPECT_EQ(QString(elsewhere).remove(u'_'), QString(text).remove(u'_'));
        EXPECT_EQ(shownByOwnWindow(menuLabel(text, MenuDrawing::OwnWindow)), text);
    }
}

TEST(MenuText, aShortenedCommandSaysThatItIsShortened)
{
    const QString sixty(60, u'x');
    EXPECT_EQ(shortenedCommand(sixty), sixty);
    EXPECT_EQ(shortenedCommand(sixty + u'y'), sixty + u'…');
    EXPECT_EQ(shortenedCommand(u"ls\nrm -rf /"_s), u"ls…"_s);
    EXPECT_EQ(shortenedCommand(u"ls\u202E-la"_s), u"ls⟨U+202E⟩-la"_s);
    EXPECT_TRUE(shortenedCommand(QString(1'000'000, u'x')).endsWith(u'…'));
}

TEST(MenuText, aCommandIsWholeOrSaysThatItIsNot)
{
    const MenuCommandRows whole = commandRows(QString(100, u'x') + u"\nsecond"_s);
    EXPECT_TRUE(whole.isWhole);
    EXPECT_EQ(whole.rows, (QStringList {QString(64, u'x'), QString(36, u'x'), u"second"_s}));

    EXPECT_TRUE(commandRows(QString(640, u'x')).isWhole);
    EXPECT_FALSE(commandRows(QString(641, u'x')).isWhole);
    EXPECT_FALSE(commandRows(u"line\n"_s.repeated(3000)).isWhole);
}

constexpr qsizetype enough = 100;

ApprovalItem item(const char *id, const char *command = "ls")
{
    ApprovalItem made;
    made.approvalId = QString::fromLatin1(id);
    made.command = QString::fromLatin1(command);
    return made;
}

TEST(MenuRows, nothingMovesInAnOpenMenu)
{
    const auto shown = rowsOfClosedMenu({item("a"), item("b"), item("c")});
    // b ended, c came again with another command, d is new and the board lists it first.
    const auto rows = rowsOfOpenMenu(shown, {item("d"), item("a"), item("c", "rm -rf /")}, enough);
    EXPECT_EQ(rows,
              (QList<MenuRow> {{item("a"), true},
                               {item("b"), false},
                               {item("c"), false},
                               {item("d"), true},
                               {item("c", "rm -rf /"), true}}));
    EXPECT_EQ(rowsOfOpenMenu(rows, {item("a")}, enough).size(), rows.size());
    // What has ended stays so under the pointer, even when the same request is asked again.
    const auto again = rowsOfOpenMenu(rows, {item("b")}, enough);
    EXPECT_FALSE(again.at(1).isPending);
    EXPECT_EQ(again.constLast(), (MenuRow {item("b"), true}));
    // However much comes and goes meanwhile.
    EXPECT_EQ(rowsOfOpenMenu(rows, {item("e"), item("f"), item("g")}, 6).size(), 6);
}

} // namespace
} // namespace bram
