// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayFrames.h"
#include "gateway/ConnectHandshake.h"
#include "gateway/GatewayClient.h"
#include "gateway/UsualFrames.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

#include <limits>

using namespace bram;

namespace
{

std::optional<GatewayEvent> eventOf(const QByteArray &json)
{
    const auto frame = parseFrame(json);
    const auto *event = frame ? std::get_if<GatewayEvent>(&*frame) : nullptr;
    return event != nullptr ? std::optional(*event) : std::nullopt;
}

/// A request event with one JSON text replaced by another.
std::optional<ApprovalItem> requestWith(const QByteArray &before = {}, const QByteArray &after = {})
{
    QByteArray json
        = R"({"type":"event","event":"exec.approval.requested","payload":{"id":"a",)"
          R"("request":{"command":"ls","agentId":"main"},"createdAtMs":5,"expiresAtMs":0}})";
    if (!before.isEmpty()) {
        EXPECT_TRUE(json.contains(before)) << before.constData();
        json.replace(before, after);
    }
    const auto event = eventOf(json);
    return event ? std::optional(std::get<ApprovalRequested>(*event).item) : std::nullopt;
}

HandshakeInput handshake(std::optional<QString> token, std::optional<QString> password,
                         std::optional<QString> nonce)
{
    return {.identity = *makeNewIdentity(),
            .credentials = {std::move(token), std::move(password)},
            .nonce = std::move(nonce),
            .signedAtMs = 1718000000000,
            .locale = QStringLiteral("ko_KR")};
}

} // namespace

TEST(GatewayFrames, RequestedEventNeedsItsFieldsInTheirTypes)
{
    const ApprovalItem expected {QStringLiteral("a"), QStringLiteral("ls"), QStringLiteral("main"),
                                 5, 0};
    EXPECT_EQ(requestWith(), expected);
    EXPECT_EQ(requestWith(R"("id":"a",)", ""), std::nullopt);
    EXPECT_EQ(requestWith(R"("id":"a")", R"("id":7)"), std::nullopt);
    EXPECT_EQ(requestWith(R"("command":"ls")", R"("command":["ls"])"), std::nullopt);
    EXPECT_EQ(requestWith(R"({"command":"ls","agentId":"main"})", "null"), std::nullopt);
    EXPECT_EQ(requestWith(R"("createdAtMs":5)", R"("createdAtMs":"5")"), std::nullopt);
    EXPECT_EQ(requestWith(R"(,"expiresAtMs":0)", ""), std::nullopt);
    EXPECT_EQ(requestWith(R"("agentId":"main")", R"("agentId":"   ")")->agentId, std::nullopt);
    EXPECT_EQ(requestWith(R"("agentId":"main")", R"("agentId":3)")->agentId, std::nullopt);
    EXPECT_EQ(requestWith(R"("main")", R"(" main\n")")->agentId, QStringLiteral("main"));
}

TEST(GatewayFrames, NumbersAreTruncatedAndOutOfRangeIsNoNumber)
{
    constexpr auto largest = std::numeric_limits<qint64>::max();
    struct Case {
        QByteArray text;
        std::optional<qint64> value;
    };
    const std::vector<Case> cases {
        {"1718000000123.9", 1718000000123},
        {"-2.7", -2},
        {"1e3", 1000},
        {"9223372036854775807", largest},
        {"9223372036854775808", std::nullopt},
        {"-9223372036854775808", std::numeric_limits<qint64>::min()},
        {"1e19", std::nullopt},
        {"-1e300", std::nullopt},
        {"true", std::nullopt},
    };
    for (const auto &[text, value] : cases) {
        const auto item = requestWith("\"createdAtMs\":5", "\"createdAtMs\":" + text);
        EXPECT_EQ(item.has_value(), value.has_value()) << text.constData();
        if (item && value) {
            EXPECT_EQ(item->createdAtMs, *value) << text.constData();
        }
    }
}

TEST(GatewayFrames, ResponsesSucceedOnlyOnBooleanTrue)
{
    struct Case {
        QByteArray json;
        std::expected<QJsonValue, QString> result;
    };
    const auto failed = [](const char *text) { return std::unexpected(QString::fromUtf8(text)); };
    const std::vector<Case> cases {
        {R"({"type":"res","id":"1","ok":true,"payload":[1]})", QJsonArray {1}},
        {R"({"type":"res","id":"1","ok":true})", QJsonObject()},
        {R"({"type":"res","id":"1","ok":"true"})", failed("Request failed")},
        {R"({"type":"res","id":"1"})", failed("Request failed")},
        {R"({"type":"res","id":"1","ok":false,"error":{"message":"denied"}})", failed("denied")},
        {R"({"type":"res","id":"1","ok":false,"error":{"message":5}})", failed("Request failed")},
        {R"({"type":"res","id":"1","ok":false,"error":"denied"})", failed("Request failed")},
    };
    for (const auto &[json, result] : cases) {
        const auto frame = parseFrame(json);
        ASSERT_TRUE(frame && std::holds_alternative<ResponseFrame>(*frame)) << json.constData();
        EXPECT_EQ(std::get<ResponseFrame>(*frame).result, result) << json.constData();
    }
}

TEST(GatewayFrames, WhatIsNotJsonFailsAndWhatIsUnknownIsIgnored)
{
    const QByteArray deep = QByteArray(2000, '[') + QByteArray(2000, ']');
    for (const QByteArray &garbage :
         {QByteArray("nonsense"), QByteArray(""), QByteArray("1,2"), QByteArray("1]"),
          QByteArray("\"cut off"), QByteArray("{\"type\":\"event\""), deep,
          QByteArray("{\"type\":\"\xff\xfe\"}"), QByteArray("\0\0\0\0", 4)}) {
        EXPECT_FALSE(parseFrame(garbage)) << garbage.left(30).constData();
    }
    for (const char *untyped : {"[]", "{}", R"({"type":5})", "[{\"type\":\"event\"}]", "42",
                                " -1.5e3\n", "\"x\"", "null", "true"}) {
        const auto frame = parseFrame(untyped);
        EXPECT_TRUE(frame && std::holds_alternative<UntypedFrame>(*frame)) << untyped;
    }
    for (const char *unknown : {R"({"type":"hello"})", R"({"type":"res","id":4})"}) {
        const auto frame = parseFrame(unknown);
        EXPECT_TRUE(frame && std::holds_alternative<IgnoredFrame>(*frame)) << unknown;
    }
    EXPECT_EQ(eventOf(R"({"type":"event","event":"tick","payload":{}})"), std::nullopt);
    EXPECT_EQ(eventOf(R"({"type":"event","event":"exec.approval.resolved","payload":{"id":1}})"),
              std::nullopt);
    EXPECT_EQ(eventOf(R"({"type":"event","event":"exec.approval.resolved","payload":[]})"),
              std::nullopt);
}

TEST(GatewayFrames, UsualOnesAreReadQuicklyAndAlikeAndAllOthersAreLeft)
{
    UsualFrameReader reader;
    const auto requested
        = [](const QByteArray &id, const QByteArray &command, const QByteArray &createdAtMs) {
              return QByteArray(
                         R"({"type":"event","event":"exec.approval.requested","seq":7,"payload":{)")
                  + R"("createdAtMs":)" + createdAtMs + R"(,"expiresAtMs":-1,"id":)" + id
                  + R"(,"request":{"command":)" + command + R"(,"agentId":" main ","cwd":null}}})";
          };
    for (const QByteArray &usual :
         {requested(R"("a")", R"("ls \"\u00e9\"\n결제 🚀")", "1718000000123"),
          requested(R"("\ud83d\ude80")", R"("\u0000")", "9223372036854775807"),
          QByteArray(R"({"type":"event","event":"exec.approval.resolved","payload":{"id":"a"}})"),
          QByteArray(R"( {"id":"a","ok":true,"payload":{},"type":"res"} )"),
          QByteArray(R"({"id":"a","ok":true,"type":"res"})")}) {
        const auto frame = reader.read(usual);
        ASSERT_TRUE(frame) << usual.constData();
        EXPECT_EQ(*frame, parseFrame(usual)) << usual.constData();
    }
    for (const QByteArray &unusual :
         {requested("5", R"("ls")", "5"), requested(R"("a")", R"("\ud800")", "5"),
          requested(R"("a")", R"("ls","command":"rm")", "5"), requested(R"("a")", R"("ls")", "5.5"),
          requested(R"("a")", R"("ls")", "9223372036854775808"),
          requested(R"("a")", '"' + QByteArray(100'000, 'x') + '"', "5"),
          requested(R"("a")", "\"\t\"", "5"), requested(R"("a")", "\"\xff\"", "5"),
          QByteArray(R"({"type":"event","event":"exec.approval.resolved","payload":{"id":1}})"),
          QByteArray(R"({"type":"event","event":"connect.challenge","payload":{"nonce":"n"}})"),
          QByteArray(R"({"id":"a","ok":true,"payload":[],"type":"res"})"),
          QByteArray(R"({"id":"a","ok":false,"type":"res"})"), QByteArray(R"({"type":"hello"})"),
          QByteArray("{"), QByteArray("[]"), QByteArray()}) {
        EXPECT_FALSE(reader.read(unusual)) << unusual.left(200).constData();
    }
}

TEST(GatewayFrames, NothingThatIsInvisibleIsLostAtTheBeginningOfAText)
{
    const QByteArray mark("\xef\xbb\xbf");
    const QString shown(QChar(0xfeff));
    EXPECT_EQ(requestWith(R"("ls")", '"' + mark + "ls\"")->command, shown + QStringLiteral("ls"));
    EXPECT_EQ(requestWith(R"("ls")", '"' + mark + mark + "ls\"")->command,
              shown + shown + QStringLiteral("ls"));
    EXPECT_EQ(requestWith(R"("ls")", R"("\")" + mark + "ls\"")->command,
              QStringLiteral("\"") + shown + QStringLiteral("ls"));
    EXPECT_EQ(requestWith(R"("a")", '"' + mark + "a\"")->approvalId, shown + QStringLiteral("a"));
    EXPECT_NE(requestWith(R"("main")", '"' + mark + "main\"")->agentId, QStringLiteral("main"));
}

TEST(GatewayFrames, ADecisionNamesTheRequestExactly)
{
    for (const QString &approvalId :
         {QStringLiteral("9b2f-1"), QStringLiteral("\ufeffa"),
          QStringLiteral("\"},\\ \n\u0001\u007f/"), QStringLiteral("결제 🚀"),
          QString(QChar(0xd800)) + QChar(u'x'), QString()}) {
        const QString frame
            = encodeResolveRequest(QStringLiteral("7"), approvalId, ApprovalDecision::AllowAlways);
        const QJsonObject expected {
            {QStringLiteral("type"), QStringLiteral("req")},
            {QStringLiteral("id"), QStringLiteral("7")},
            {QStringLiteral("method"), QStringLiteral("exec.approval.resolve")},
            {QStringLiteral("params"),
             QJsonObject {{QStringLiteral("id"), approvalId},
                          {QStringLiteral("decision"), QStringLiteral("allow-always")}}}};
        EXPECT_EQ(QJsonDocument::fromJson(frame.toUtf8()).object(), expected) << qPrintable(frame);
    }
}

TEST(ConnectHandshake, PayloadFieldsFollowNonceAndUntrimmedToken)
{
    const auto v1 = handshake(QStringLiteral("  abc  "), {}, {});
    EXPECT_EQ(
        signedPayload(v1),
        QStringLiteral("v1|%1|brackwen-macos|webchat|operator|operator.admin,operator.approvals,"
                       "operator.pairing|1718000000000|  abc  ")
            .arg(v1.identity.deviceId));
    const auto v2 = handshake({}, {}, QStringLiteral("N"));
    EXPECT_TRUE(signedPayload(v2).startsWith(QStringLiteral("v2|")));
    EXPECT_TRUE(signedPayload(v2).endsWith(QStringLiteral("|1718000000000||N")));

    const auto withoutNonce = connectParams(v1)->value(QStringLiteral("device")).toObject();
    EXPECT_FALSE(withoutNonce.contains(QStringLiteral("nonce")));
    EXPECT_EQ(connectParams(v2)
                  ->value(QStringLiteral("device"))
                  .toObject()
                  .value(QStringLiteral("nonce")),
              QStringLiteral("N"));
}

TEST(ConnectHandshake, AuthKeepsItsAsymmetry)
{
    const auto auth = [](std::optional<QString> token, std::optional<QString> password) {
        const auto params = authParams({std::move(token), std::move(password)});
        return params ? QJsonDocument(*params).toJson(QJsonDocument::Compact) : QByteArray("none");
    };
    EXPECT_EQ(auth(QStringLiteral("  abc  "), {}), R"({"password":"","token":"abc"})");
    EXPECT_EQ(auth(QStringLiteral("abc"), QStringLiteral(" pw ")),
              R"({"password":" pw ","token":"abc"})");
    EXPECT_EQ(auth({}, QStringLiteral(" pw ")), R"({"password":"pw"})");
    EXPECT_EQ(auth(QStringLiteral(" "), QStringLiteral("\n")), "none");
    EXPECT_FALSE(connectParams(handshake({}, {}, {}))->contains(QStringLiteral("auth")));
}

TEST(ConnectHandshake, OriginIsHttpsOnlyForWss)
{
    const auto origin = [](const char *url) {
        return gatewayOrigin(QUrl(QString::fromUtf8(url)))
            .value_or(QStringLiteral("none"))
            .toStdString();
    };
    EXPECT_EQ(origin("ws://127.0.0.1:18789"), "http://127.0.0.1:18789");
    EXPECT_EQ(origin("wss://10.0.0.5:443/path"), "https://10.0.0.5:443");
    EXPECT_EQ(origin("WSS://host"), "https://host");
    EXPECT_EQ(origin("https://10.0.0.5"), "http://10.0.0.5");
    EXPECT_EQ(origin("ws://[::1]:9/"), "http://[::1]:9");
    EXPECT_EQ(origin("ws:///path"), "none");
}

TEST(ReconnectDelay, GrowsToFifteenSecondsInWholeNanoseconds)
{
    const std::vector<qint64> expected {800'000'000,    1'360'000'000, 2'312'000'000,
                                        3'930'400'000,  6'681'680'000, 11'358'856'000,
                                        15'000'000'000, 15'000'000'000};
    auto delay = firstReconnectDelay;
    for (const qint64 wait : expected) {
        EXPECT_EQ(delay.count(), wait);
        delay = nextReconnectDelay(delay);
    }
}
