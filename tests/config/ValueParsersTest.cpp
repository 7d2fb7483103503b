// SPDX-License-Identifier: Apache-2.0
#include "config/ValueParsers.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <limits>

using namespace bram;

namespace
{
/// As it comes out of a file.
QJsonValue json(const char *text)
{
    return QJsonDocument::fromJson(QByteArray("[") + text + "]").array().at(0);
}
} // namespace

TEST(ValueParsers, WhatIsTrueWhatIsFalseAndWhatIsNeither)
{
    for (const char *text :
         {"true", "1", "-3", "0.5", R"("1")", R"(" TRUE\n")", R"("yes")", R"("Y")", R"("on")"}) {
        EXPECT_EQ(parseBool(json(text)), true) << text;
    }
    for (const char *text :
         {"false", "0", "0.0", R"("0")", R"("False")", R"("no")", R"(" n ")", R"("OFF")"}) {
        EXPECT_EQ(parseBool(json(text)), false) << text;
    }
    for (const char *text : {"null", "[]", "[1]", "{}", R"("")", R"("2")", R"("truely")", R"("t")",
                             R"("1.0")", R"("참")"}) {
        EXPECT_EQ(parseBool(json(text)), std::nullopt) << text;
    }
    EXPECT_EQ(parseBool(QJsonValue(QJsonValue::Undefined)), std::nullopt);
}

TEST(ValueParsers, WholeNumbersDigitForDigit)
{
    const struct {
        const char *text;
        std::optional<qint64> number;
    } rows[] = {
        {"7", 7},
        {"-100123456789", -100123456789},
        {"9007199254740993", 9007199254740993}, // more digits than a double holds
        {"9223372036854775807", std::numeric_limits<qint64>::max()},
        {R"("-9223372036854775808")", std::numeric_limits<qint64>::min()},
        {R"(" +42\t")", 42},
        {R"("007")", 7},
        {"2.0", 2},
        {"1.5", std::nullopt},
        {"1e300", std::nullopt},
        {R"("9223372036854775808")", std::nullopt},
        {R"("12 34")", std::nullopt},
        {R"("1,234")", std::nullopt},
        {R"("0x10")", std::nullopt},
        {R"("--1")", std::nullopt},
        {R"("-")", std::nullopt},
        {R"("")", std::nullopt},
        {R"("４２")", std::nullopt},
        {"true", std::nullopt},
        {"null", std::nullopt},
        {"[1]", std::nullopt},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(parseInt64(json(row.text)), row.number) << row.text;
    }
}

TEST(ValueParsers, ListsOfNumbersHoweverTheyAreDivided)
{
    const struct {
        std::optional<QString> text;
        QList<qint64> numbers;
    } rows[] = {
        {QStringLiteral("123; -100200,word  456"), {-100200, 123, 456}},
        {QStringLiteral(" 5,5\n+5\t05"), {5}},
        {QStringLiteral("1;9223372036854775808,1.5,,;"), {1}},
        {QStringLiteral("none at all"), {}},
        {std::nullopt, {}},
    };
    for (const auto &row : rows) {
        EXPECT_EQ(parseInt64List(row.text), row.numbers)
            << row.text.value_or(QString()).toStdString();
    }
}
