// SPDX-License-Identifier: Apache-2.0
#include "gateway/GatewayClient.h"
#include "gateway/DeviceIdentityStore.h"
#include "practice/PracticeGateway.h"
#include "support/Doubles.h"
#include "support/Waiting.h"
#include "system/BackgroundTasks.h"
#include "system/MemorySecretStore.h"
#include "system/Preferences.h"

#include <QAbstractEventDispatcher>
#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QWebSocketServer>

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace bram;
using namespace bram::test;
using testing::ElementsAre;
using testing::HasSubstr;

namespace
{

struct Strangers final : PeerUsers {
    std::optional<QString> strangerBehind(const TcpEnds &ends) const override
    {
        asked = ends;
        return stranger;
    }
    std::optional<QString> stranger;
    mutable TcpEnds asked;
};

/// The client against a practice gateway, with the states it reports as short texts.
class GatewayClientTest : public testing::Test
{
protected:
    explicit GatewayClientTest(const PracticeGatewayOptions &options = {})
        : gateway(options, clock)
        , client({identities, clock, log, tasks, peerUsers})
    {
        EXPECT_TRUE(gateway.listen());
        QObject::connect(&client, &GatewayClient::stateChanged, &client,
                         [this](const GatewayConnectionState &state) {
                             if (const auto *lost = std::get_if<GatewayDisconnected>(&state)) {
                                 states.push_back("disconnected: " + lost->reason.toStdString());
                             } else {
                                 states.push_back(std::holds_alternative<GatewayConnecting>(state)
                                                      ? "connecting"
                                                      : "connected");
                             }
                         });
        QObject::connect(&client, &GatewayClient::eventReceived, &client,
                         [this](const GatewayEvent &event) { events.append(event); });
        QObject::connect(&client, &GatewayClient::handshakeCompleted, &client,
                         [this] { ++handshakes; });
    }
    ~GatewayClientTest() override
    {
        client.stop();
        EXPECT_TRUE(waitUntil([this] { return tasks.running().isEmpty(); }));
    }

    void start(const GatewayCredentials &credentials = {})
    {
        client.start({gateway.url(), credentials});
    }
    [[nodiscard]] bool waitHandshakes(int count)
    {
        return waitUntil([&] { return handshakes == count; });
    }
    [[nodiscard]] bool waitState(const std::string &part)
    {
        return waitUntil(
            [&] { return !states.empty() && states.back().find(part) != std::string::npos; });
    }

    QTemporaryDir folder;
    ManualClock clock;
    RecordingLog log;
    BackgroundTasks tasks {log};
    MemorySecretStore secrets;
    Preferences preferences {folder.filePath(QStringLiteral("preferences.ini"))};
    DeviceIdentityStore identities {secrets, preferences, log, tasks};
    Strangers peerUsers;
    PracticeGateway gateway;
    GatewayClient client;
    std::vector<std::string> states;
    QList<GatewayEvent> events;
    int handshakes = 0;
};

class StrictGateway : public GatewayClientTest
{
protected:
    StrictGateway()
        : GatewayClientTest({.token = QStringLiteral("secret-1"), .requireNonce = true})
    {
    }
};

} // namespace

TEST_F(GatewayClientTest, ConnectsDeliversEventsAndReconnectsAfterAKill)
{
    start();
    ASSERT_TRUE(waitHandshakes(1));
    EXPECT_THAT(states, ElementsAre("connecting", "connected"));

    gateway.announce({.approvalId = QStringLiteral("a"),
                      .command = QStringLiteral("ls"),
                      .agentId = {},
                      .createdAtMs = 1,
                      .expiresAtMs = 0});
    ASSERT_TRUE(waitUntil([this] { return events.size() == 1; }));

    gateway.close();
    ASSERT_TRUE(waitState("disconnected: Gateway connection lost"));
    QElapsedTimer untilBack;
    untilBack.start();
    ASSERT_TRUE(gateway.listen());
    ASSERT_TRUE(waitHandshakes(2));
    EXPECT_GE(untilBack.elapsed(), 700);
    // What was pending is told again to a client that comes back.
    ASSERT_TRUE(waitUntil([this] { return events.size() == 2; }));
    EXPECT_EQ(events.first(), events.last());
}

TEST_F(GatewayClientTest, AStrangerOnThePortIsToldNothing)
{
    int frames = 0;
    QObject::connect(&gateway, &PracticeGateway::frameReceived, &client, [&] { ++frames; });
    peerUsers.stranger = QStringLiteral("nobody, id 65534");
    start({QStringLiteral("secret"), {}});
    ASSERT_TRUE(waitState("disconnected"));
    EXPECT_EQ(states.back(),
              QStringLiteral("disconnected: port %1 of this machine belongs to another user "
                             "(nobody, id 65534); it gets no credentials")
                  .arg(gateway.url().port())
                  .toStdString());
    EXPECT_EQ(peerUsers.asked.peerPort, gateway.url().port());
    peerUsers.stranger.reset();
    ASSERT_TRUE(waitHandshakes(1));
    EXPECT_EQ(frames, 1);
}

TEST_F(GatewayClientTest, ADecisionWithoutAnAnswerEndsAndALateAnswerIsTold)
{
    const auto decide = [](GatewayClient *to) -> QCoro::Task<GatewayClient::CallResult> {
        co_return co_await to->resolveApproval(QStringLiteral("a"), ApprovalDecision::Deny);
    };
    QStringList late;
    QObject::connect(&client, &GatewayClient::decisionConfirmedLate, &client,
                     [&](const QString &id) { late.append(id); });
    client.setDecisionTimeLimit(std::chrono::milliseconds(50));
    start();
    ASSERT_TRUE(waitHandshakes(1));
    gateway.announce(
        {.approvalId = QStringLiteral("a"), .command = QStringLiteral("ls"), .agentId = {}});
    gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    const auto unanswered
        = GatewayClient::CallResult(std::unexpected(GatewayClientError::timedOut()));
    EXPECT_EQ(bram::test::waitFor(decide(&client)), unanswered);
    gateway.setDecisionBehaviour({.fault = DecisionFault::Delay, .delayMs = 200});
    EXPECT_EQ(bram::test::waitFor(decide(&client)), unanswered);
    EXPECT_TRUE(waitUntil([&] { return late == QStringList(QStringLiteral("a")); }));
    EXPECT_EQ(states.back(), "connected");
}

TEST_F(GatewayClientTest, AfterACleanEndItIsBackAtOnceUnlessThatWasAtOnce)
{
    QWebSocketServer server(QStringLiteral("clean"), QWebSocketServer::NonSecureMode);
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    std::chrono::milliseconds life {1100};
    QObject::connect(&server, &QWebSocketServer::newConnection, &server, [&] {
        auto *peer = server.nextPendingConnection();
        peer->setParent(&server);
        QObject::connect(peer, &QWebSocket::textMessageReceived, peer, [&, peer](QString text) {
            peer->sendTextMessage(
                QStringLiteral(R"({"type":"res","ok":true,"id":"%1"})")
                    .arg(QJsonDocument::fromJson(text.toUtf8())[u"id"].toString()));
            QTimer::singleShot(life, peer, [peer] { peer->close(); });
        });
    });
    for (const bool isShort : {false, true}) {
        states.clear();
        handshakes = 0;
        client.start({server.serverUrl(), {}});
        ASSERT_TRUE(waitState("disconnected: Gateway closed the connection"));
        QElapsedTimer wait;
        wait.start();
        ASSERT_TRUE(waitHandshakes(2));
        EXPECT_EQ(wait.hasExpired(700), isShort);
        life = std::chrono::milliseconds(100);
    }
}

TEST_F(GatewayClientTest, APeerThatResetsIsOneConnectionAnAttempt)
{
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *generic = reinterpret_cast<sockaddr *>(&address);
    ASSERT_EQ(bind(listener, generic, size), 0);
    ASSERT_EQ(::listen(listener, 16), 0);
    getsockname(listener, generic, &size);
    std::atomic<int> accepted = 0;
    std::thread resetting([&] {
        for (int peer = accept(listener, nullptr, nullptr); peer >= 0;
             peer = accept(listener, nullptr, nullptr)) {
            ++accepted;
            const linger abruptly {1, 0};
            setsockopt(peer, SOL_SOCKET, SO_LINGER, &abruptly, sizeof abruptly);
            ::close(peer);
        }
    });
    // A program that comes late finds the connection reset before it has seen it made.
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
                     &client, [] { usleep(2000); });
    client.start({QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(ntohs(address.sin_port))), {}});
    EXPECT_TRUE(waitState("disconnected"));
    EXPECT_EQ(accepted, 1);
    shutdown(listener, SHUT_RDWR);
    resetting.join();
    ::close(listener);
}

TEST_F(StrictGateway, FirstHandshakeWithoutNonceIsRefusedOrChallengedThenSucceeds)
{
    start({QStringLiteral("secret-1"), {}});
    ASSERT_TRUE(waitHandshakes(1));
    EXPECT_EQ(gateway.clientCount(), 1);
}

TEST_F(StrictGateway, RefusedHandshakeIsReportedOnceAsConnectedThenDisconnected)
{
    start({QStringLiteral("wrong"), {}});
    ASSERT_TRUE(waitState("disconnected"));
    ASSERT_EQ(states.size(), 3U);
    EXPECT_EQ(states[1], "connected");
    EXPECT_THAT(states[2], HasSubstr("disconnected: connect failed: "));
    EXPECT_FALSE(
        log.lines().filter(QStringLiteral("[Brackwen] connect handshake failed: ")).isEmpty());
    ASSERT_TRUE(waitUntil([this] { return states.size() >= 4; }));
    EXPECT_EQ(states[3], "connecting");
}

TEST_F(GatewayClientTest, CallsEndWithTheConnectionAndFailAtOnceWithoutOne)
{
    const auto call = [](GatewayClient *gatewayClient) -> QCoro::Task<GatewayClient::CallResult> {
        co_return co_await gatewayClient->resolveApproval(QStringLiteral("a"),
                                                          ApprovalDecision::Deny);
    };
    const auto notConnected
        = GatewayClient::CallResult(std::unexpected(GatewayClientError::notConnected()));
    EXPECT_EQ(bram::test::waitFor(call(&client)), notConnected);

    start();
    ASSERT_TRUE(waitHandshakes(1));
    gateway.announce(
        {.approvalId = QStringLiteral("a"), .command = QStringLiteral("ls"), .agentId = {}});
    gateway.setDecisionBehaviour({.fault = DecisionFault::NeverAnswer});
    auto open = call(&client);
    ASSERT_TRUE(waitUntil([this] { return !events.isEmpty(); }));
    const auto reported = states.size();
    client.stop();
    EXPECT_EQ(bram::test::waitFor(std::move(open)), notConnected);
    EXPECT_EQ(states.back(), "connected");
    EXPECT_EQ(states.size(), reported);
}

TEST_F(GatewayClientTest, HostileFramesEndTheConnectionWithOneClearReasonOrAreIgnored)
{
    start();
    ASSERT_TRUE(waitHandshakes(1));
    gateway.sendRawText(QStringLiteral("{\"type\":\"event\",\"event\":\"tick\"}"));
    gateway.sendRawText(QStringLiteral("{\"type\":\"res\",\"id\":\"nobody\",\"ok\":true}"));
    // What is too large is dropped and told, and the connection goes on.
    qint64 refused = 0;
    QObject::connect(&client, &GatewayClient::messageRefused, &client,
                     [&](qint64 bytes) { refused += bytes; });
    constexpr qsizetype tooLarge = 4 * 1024 * 1024 + 1;
    gateway.sendRawBinary(QByteArray(tooLarge, ' '));
    gateway.sendRawText(QString(tooLarge, u' '));
    gateway.sendRawBinary(
        R"({"type":"event","event":"exec.approval.resolved","payload":{"id":"binary"}})");
    ASSERT_TRUE(waitUntil([this] { return events.size() == 1; }));
    EXPECT_EQ(refused, 2 * tooLarge);
    EXPECT_EQ(states.back(), "connected");

    struct Case {
        QByteArray frame;
        const char *reason;
    };
    const std::vector<Case> cases {
        {"not json", "disconnected: Gateway sent an invalid frame: "},
        {QByteArray(5000, '['), "disconnected: Gateway sent an invalid frame: "},
    };
    int round = 1;
    for (const auto &[frame, reason] : cases) {
        gateway.sendRawBinary(frame);
        ASSERT_TRUE(waitState("disconnected")) << reason;
        EXPECT_THAT(states.back(), HasSubstr(reason));
        client.stop();
        start();
        ASSERT_TRUE(waitHandshakes(++round));
    }
    // Just as large as allowed.
    QByteArray largest
        = R"({"type":"event","event":"exec.approval.resolved","payload":{"id":"big"}})";
    largest.append(4 * 1024 * 1024 - largest.size(), ' ');
    gateway.sendRawBinary(largest);
    ASSERT_TRUE(waitUntil([this] { return events.size() == 2; }));
    EXPECT_EQ(states.back(), "connected");
}

TEST_F(GatewayClientTest, APeerThatIsNoGatewayIsAReasonNotACrash)
{
    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, &server, [&server] {
        auto *peer = server.nextPendingConnection();
        peer->write("HTTP/1.1 404 Not Found\r\nContent-Length: 0\r\n\r\n");
        peer->disconnectFromHost();
    });
    client.start({QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(server.serverPort())), {}});
    ASSERT_TRUE(waitState("disconnected"));
    EXPECT_THAT(states.back(), testing::HasSubstr("404"));
    EXPECT_THAT(states.back(), testing::Not(testing::HasSubstr("QWebSocket")));

    server.close();
    client.stop();
    states.clear();
    for (const char *scheme : {"ws", "wss"}) {
        const QString address = QLatin1StringView(scheme) + QStringLiteral("://%1:1");
        client.start({QUrl(address.arg(QStringLiteral("127.0.0.1"))), {}});
        ASSERT_TRUE(waitState("disconnected"));
        EXPECT_EQ(states.back(), "disconnected: Connection refused") << scheme;
        client.start({QUrl(address.arg(QStringLiteral("no-such-host.invalid"))), {}});
        ASSERT_TRUE(waitState("disconnected: Host not found")) << scheme;
        states.clear();
    }
}

TEST_F(GatewayClientTest, RestartFromWithinAReportWins)
{
    // The first report of a loss restarts the client at another address, as a token reload does.
    PracticeGateway other({}, clock);
    ASSERT_TRUE(other.listen());
    bool restarted = false;
    QObject::connect(&client, &GatewayClient::stateChanged, &client,
                     [&](const GatewayConnectionState &state) {
                         if (std::holds_alternative<GatewayDisconnected>(state)
                             && !std::exchange(restarted, true)) {
                             client.start({other.url(), {}});
                         }
                     });
    start();
    ASSERT_TRUE(waitHandshakes(1));
    gateway.dropClients();
    ASSERT_TRUE(waitHandshakes(2));
    EXPECT_EQ(other.clientCount(), 1);
    EXPECT_EQ(gateway.clientCount(), 0);
}

TEST_F(GatewayClientTest, ABurstIsDeliveredWholeInOrderAndBeforeTheEndOfTheConnection)
{
    constexpr int count = 5000;
    QWebSocketServer server(QStringLiteral("burst"), QWebSocketServer::NonSecureMode);
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QWebSocketServer::newConnection, &server, [&server] {
        auto *peer = server.nextPendingConnection();
        peer->setParent(&server);
        for (int i = 0; i < count; ++i) {
            peer->sendTextMessage(
                QStringLiteral("{\"type\":\"event\",\"event\":\"exec.approval.resolved\","
                               "\"payload\":{\"id\":\"%1\"}}")
                    .arg(i));
        }
        peer->close();
    });
    qsizetype deliveredAtEnd = -1;
    QObject::connect(&client, &GatewayClient::stateChanged, &client,
                     [&](const GatewayConnectionState &state) {
                         if (std::holds_alternative<GatewayDisconnected>(state)) {
                             deliveredAtEnd = events.size();
                             client.stop();
                         }
                     });
    client.start({server.serverUrl(), {}});
    ASSERT_TRUE(waitUntil([&] { return deliveredAtEnd >= 0; }));
    ASSERT_EQ(deliveredAtEnd, count);
    for (int i = 0; i < count; ++i) {
        ASSERT_EQ(std::get<ApprovalResolved>(events.at(i)).approvalId, QString::number(i));
    }
    EXPECT_EQ(states.back(), "disconnected: Gateway closed the connection");
}

namespace
{

/// A peer that speaks just enough to open a WebSocket, and from then on says nothing.
class SilentPeer : public QTcpServer
{
public:
    SilentPeer()
    {
        EXPECT_TRUE(listen(QHostAddress::LocalHost));
        QObject::connect(this, &QTcpServer::newConnection, this, [this] {
            auto *peer = nextPendingConnection();
            QObject::connect(peer, &QTcpSocket::readyRead, peer, [peer] {
                const QByteArray request = peer->readAll();
                const qsizetype at = request.indexOf("Sec-WebSocket-Key: ");
                if (at < 0) {
                    return;
                }
                const QByteArray key = request.sliced(at + 19, 24);
                const QByteArray accept
                    = QCryptographicHash::hash(key + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11",
                                               QCryptographicHash::Sha1)
                          .toBase64();
                peer->write("HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                            "Connection: Upgrade\r\nSec-WebSocket-Accept: "
                            + accept + "\r\n\r\n");
            });
        });
    }
    QUrl url() const { return QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(serverPort())); }
};

std::optional<QString> endOf(GatewaySocket &socket)
{
    std::optional<QString> reason;
    QObject::connect(&socket, &GatewaySocket::ended, &socket,
                     [&](const QString &text) { reason = text; });
    socket.open();
    EXPECT_TRUE(waitUntil([&] { return reason.has_value(); }));
    return reason;
}

} // namespace

TEST(GatewaySocketLimits, APeerGoneSilentIsGivenUpAndOneThatAnswersIsNot)
{
    using namespace std::chrono_literals;
    SilentPeer silent;
    GatewaySocket abandoned(silent.url(), {.silence = 40ms});
    EXPECT_EQ(endOf(abandoned), QStringLiteral("Gateway did not answer a ping within 0.04 s"));

    QTcpServer mute;
    ASSERT_TRUE(mute.listen(QHostAddress::LocalHost));
    GatewaySocket unopened(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(mute.serverPort())),
                           {.opening = 50ms});
    EXPECT_EQ(endOf(unopened), QStringLiteral("Gateway did not answer within 0.05 s"));

    ManualClock clock;
    PracticeGateway alive({.sendChallenge = false}, clock);
    ASSERT_TRUE(alive.listen());
    GatewaySocket kept(alive.url(), {.silence = 30ms});
    bool ended = false;
    QObject::connect(&kept, &GatewaySocket::ended, &kept, [&] { ended = true; });
    kept.open();
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(waitUntil([&] { return time.hasExpired(300); }));
    EXPECT_FALSE(ended);
    EXPECT_TRUE(kept.isOpen());
}
