// SPDX-License-Identifier: Apache-2.0
// Runs in a session of tests/desktop/session. The first tray icon of a process decides how all of them
// are shown, so each group of tests here is a process of its own.
#include "ui/desktop/TrayIcon.h"
#include "support/Waiting.h"
#include "ui/desktop/CrestIcon.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QtEndian>

#include <gtest/gtest.h>

using namespace bram;
using namespace bram::test;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace
{
const QString watcher = u"org.kde.StatusNotifierWatcher"_s;
const QString item = u"org.kde.StatusNotifierItem"_s;
const QString menuInterface = u"com.canonical.dbusmenu"_s;

/// The object asked may be in this process, so the answer is waited for in the event loop.
QVariantList call(const QString &service, const QString &path, const QString &interface,
                  const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    const QDBusPendingCallWatcher pending(QDBusConnection::sessionBus().asyncCall(message));
    EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
    EXPECT_FALSE(pending.isError()) << qPrintable(pending.error().message());
    return pending.reply().arguments();
}

QVariant property(const QString &service, const QString &path, const QString &interface,
                  const QString &name)
{
    const QVariantList answer
        = call(service, path, u"org.freedesktop.DBus.Properties"_s, u"Get"_s, {interface, name});
    return answer.value(0).value<QDBusVariant>().variant();
}

/// Who the host says has icons; only what is registered by this process can be there.
QStringList registeredItems()
{
    return property(watcher, u"/StatusNotifierWatcher"_s, watcher,
                    u"RegisteredStatusNotifierItems"_s)
        .toStringList();
}

/// The bus name of our item; empty when it is not registered in time.
QString registeredItem()
{
    QStringList items;
    EXPECT_TRUE(waitUntil([&] {
        items = registeredItems();
        return !items.isEmpty();
    }));
    EXPECT_EQ(items.size(), 1);
    return items.value(0).section(u'/', 0, 0);
}

struct SentPicture {
    int width = 0;
    int height = 0;
    QByteArray bytes;
};
const QDBusArgument &operator>>(const QDBusArgument &argument, SentPicture &picture)
{
    argument.beginStructure();
    argument >> picture.width >> picture.height >> picture.bytes;
    argument.endStructure();
    return argument;
}

/// The picture with so many pixels a side, as the host gets it.
QImage sentPicture(const QString &service, int side)
{
    const auto pictures = qdbus_cast<QList<SentPicture>>(
        property(service, u"/StatusNotifierItem"_s, item, u"IconPixmap"_s));
    for (const SentPicture &picture : pictures) {
        if (picture.width == side && picture.height == side
            && picture.bytes.size() == side * side * 4) {
            QImage image(side, side, QImage::Format_ARGB32);
            for (int i = 0; i < side * side; ++i) {
                image.setPixel(i % side, i / side,
                               qFromBigEndian<QRgb>(picture.bytes.constData() + i * 4));
            }
            return image;
        }
    }
    return {};
}

QImage asSent(const PointImage &picture, int scale)
{
    QImage image = picture.image(scale).convertToFormat(QImage::Format_ARGB32);
    image.setDevicePixelRatio(1);
    return image;
}

struct SentToolTip {
    QString title;
    QString text;
};
const QDBusArgument &operator>>(const QDBusArgument &argument, SentToolTip &toolTip)
{
    QString iconName;
    QList<SentPicture> pictures;
    argument.beginStructure();
    argument >> iconName >> pictures >> toolTip.title >> toolTip.text;
    argument.endStructure();
    return argument;
}

QString sentToolTip(const QString &service)
{
    return qdbus_cast<SentToolTip>(property(service, u"/StatusNotifierItem"_s, item, u"ToolTip"_s))
        .title;
}

/// One of the session's helpers.
void run(const QString &program, const QStringList &arguments = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(program, arguments);
    ASSERT_TRUE(waitUntil([&] { return process.state() == QProcess::NotRunning; }, 30'000));
    ASSERT_EQ(process.exitCode(), 0) << qPrintable(program);
}

/// Whether the screen shows the crest: nothing else there is of its blue. Panels scale it a little.
bool screenShowsCrest()
{
    const QColor field = crestBaseIcon().image(1).pixelColor(11, 17);
    const QImage screen = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    int alike = 0;
    for (int y = 0; y < screen.height(); ++y) {
        for (int x = 0; x < screen.width(); ++x) {
            const QColor pixel = screen.pixelColor(x, y);
            const bool isField = std::abs(pixel.red() - field.red()) < 24
                && std::abs(pixel.green() - field.green()) < 24
                && std::abs(pixel.blue() - field.blue()) < 24;
            alike += isField ? 1 : 0;
        }
    }
    return alike > 40;
}

/// What an item says of its changes on the bus.
class Announcements : public QObject
{
    Q_OBJECT

public:
    explicit Announcements(const QString &service)
    {
        QDBusConnection bus = QDBusConnection::sessionBus();
        bus.connect(service, {}, item, u"NewIcon"_s, this, SLOT(newIcon()));
        bus.connect(service, {}, item, u"NewToolTip"_s, this, SLOT(newToolTip()));
    }
    int icons = 0;
    int toolTips = 0;

private Q_SLOTS:
    void newIcon() { ++icons; }
    void newToolTip() { ++toolTips; }
};

const TrayLook healthy {IndicatorState::Green, 0, {}, u"Connected"_s};

/// The ids of the entries of a menu's first level, by what they say.
QMap<QString, int> menuEntries(const QString &service, const QString &path)
{
    const QVariantList answer
        = call(service, path, menuInterface, u"GetLayout"_s, {0, 1, QStringList()});
    const auto layout = answer.value(1).value<QDBusArgument>();
    QMap<QString, int> entries;
    int id = 0;
    QVariantMap properties;
    QList<QDBusVariant> children;
    layout.beginStructure();
    layout >> id >> properties >> children;
    layout.endStructure();
    for (const QDBusVariant &child : children) {
        const auto entry = child.variant().value<QDBusArgument>();
        QVariantMap childProperties;
        entry.beginStructure();
        entry >> id >> childProperties;
        entry.endStructure();
        entries.insert(childProperties.value(u"label"_s).toString(), id);
    }
    return entries;
}
} // namespace

TEST(WithHost, theIconIsRegisteredWithItsPicturesAndFollowsItsLook)
{
    TrayIcon tray;
    QSignalSpy hosted(&tray, &TrayIcon::hostedChanged);
    tray.setLook(healthy);
    tray.start();
    EXPECT_FALSE(tray.isHosted());
    ASSERT_TRUE(waitUntil([&] { return tray.isHosted(); }));
    EXPECT_EQ(hosted.size(), 1);
    const QString service = registeredItem();
    const PointImage colour = menuBarIcon(IndicatorState::Green, 0);
    EXPECT_EQ(sentPicture(service, 22), asSent(colour, 1));
    EXPECT_EQ(sentPicture(service, 44), asSent(colour, 2));
    EXPECT_EQ(sentToolTip(service), u"Connected"_s);
    EXPECT_TRUE(waitUntil(&screenShowsCrest));

    // A new picture is announced exactly when it is another one, a tooltip always.
    Announcements heard(service);
    TrayLook look {IndicatorState::Red, 42, {}, u"Not connected, 42 requests are waiting"_s};
    tray.setLook(look);
    ASSERT_TRUE(waitUntil([&] { return heard.toolTips == 1; }));
    EXPECT_EQ(heard.icons, 1);
    EXPECT_EQ(sentToolTip(service), look.toolTip);
    EXPECT_EQ(sentPicture(service, 22), asSent(menuBarIcon(IndicatorState::Red, 42), 1));
    EXPECT_EQ(sentPicture(service, 44), asSent(menuBarIcon(IndicatorState::Red, 42), 2));
    look.toolTip = u"Not connected, 42 requests are still waiting"_s;
    tray.setLook(look);
    ASSERT_TRUE(waitUntil([&] { return heard.toolTips == 2; }));
    EXPECT_EQ(heard.icons, 1);
    look.activeApprovalId = u"a-1"_s;
    tray.setLook(look);
    ASSERT_TRUE(waitUntil([&] { return heard.icons == 2; }));
    EXPECT_EQ(heard.toolTips, 2);
}

TEST(WithHost, theMenuCanBeReadAndClickedOverTheBus)
{
    QMenu menu;
    QAction *denied = menu.addAction(u"Deny"_s);
    QSignalSpy triggered(denied, &QAction::triggered);
    TrayIcon tray;
    QSignalSpy activated(&tray, &TrayIcon::activated);
    tray.setMenu(&menu);
    tray.setLook(healthy);
    tray.start();
    ASSERT_TRUE(waitUntil([&] { return tray.isHosted(); }));
    const QString service = registeredItem();
    const QString path = property(service, u"/StatusNotifierItem"_s, item, u"Menu"_s)
                             .value<QDBusObjectPath>()
                             .path();
    const auto click = [&](int id) {
        call(service, path, menuInterface, u"Event"_s,
             {id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U});
    };
    ASSERT_TRUE(menuEntries(service, path).contains(u"Deny"_s));
    click(menuEntries(service, path).value(u"Deny"_s));
    EXPECT_TRUE(waitUntil([&] { return triggered.size() == 1; }));

    QAction *later = menu.addAction(u"Allow once"_s);
    QSignalSpy laterTriggered(later, &QAction::triggered);
    ASSERT_TRUE(waitUntil([&] { return menuEntries(service, path).contains(u"Allow once"_s); }));
    click(menuEntries(service, path).value(u"Allow once"_s));
    EXPECT_TRUE(waitUntil([&] { return laterTriggered.size() == 1; }));
    EXPECT_EQ(triggered.size(), 1);

    EXPECT_TRUE(activated.isEmpty());
    call(service, u"/StatusNotifierItem"_s, item, u"Activate"_s, {0, 0});
    EXPECT_TRUE(waitUntil([&] { return activated.size() == 1; }));
}

TEST(WithHost, theIconComesBackWithAHostThatRestarts)
{
    TrayIcon patient(nullptr, 10min);
    TrayIcon tray(nullptr, 50ms);
    QSignalSpy patientHosted(&patient, &TrayIcon::hostedChanged);
    QSignalSpy hosted(&tray, &TrayIcon::hostedChanged);
    patient.setLook(healthy);
    tray.setLook(healthy);
    patient.start();
    tray.start();
    ASSERT_TRUE(waitUntil([&] { return tray.isHosted() && patient.isHosted(); }));
    for (int restart = 0; restart < 3; ++restart) {
        hosted.clear();
        run(u"stop-tray"_s);
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {false});
        EXPECT_FALSE(tray.isHosted());
        EXPECT_FALSE(patient.isHosted());
        run(u"start-tray"_s);
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {true});
        EXPECT_TRUE(waitUntil([&] { return registeredItems().size() == 2; }));
        EXPECT_TRUE(waitUntil(&screenShowsCrest));
    }
    // A host that is back within the grace time was never missed.
    EXPECT_TRUE(patient.isHosted());
    EXPECT_EQ(patientHosted.size(), 1);
}

TEST(LateHost, aHostThatAppearsOnlyAfterTheProgramGetsTheIcon)
{
    TrayIcon tray(nullptr, 50ms);
    QSignalSpy hosted(&tray, &TrayIcon::hostedChanged);
    tray.setLook({IndicatorState::Gray, 0, {}, u"Starting"_s});
    tray.start();
    ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
    EXPECT_EQ(hosted.takeFirst(), QVariantList {false});
    tray.setLook(healthy);
    for (int start = 0; start < 2; ++start) {
        run(u"start-tray"_s);
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {true});
        const QString service = registeredItem();
        EXPECT_EQ(sentPicture(service, 22), asSent(menuBarIcon(IndicatorState::Green, 0), 1));
        EXPECT_EQ(sentToolTip(service), u"Connected"_s);
        run(u"stop-tray"_s, {u"TERM"_s});
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {false});
    }
}

TEST(OldHost, aPanelThatTakesInWindowsShowsTheIconAndMayRestart)
{
    TrayIcon tray(nullptr, 50ms);
    QSignalSpy hosted(&tray, &TrayIcon::hostedChanged);
    tray.setLook(healthy);
    tray.start();
    ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
    EXPECT_EQ(hosted.takeFirst(), QVariantList {false});
    EXPECT_FALSE(screenShowsCrest());
    for (int start = 0; start < 2; ++start) {
        run(u"start-tray"_s, {u"--xembed"_s});
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {true});
        EXPECT_TRUE(waitUntil(&screenShowsCrest));
        run(u"stop-tray"_s);
        ASSERT_TRUE(waitUntil([&] { return hosted.size() == 1; }));
        EXPECT_EQ(hosted.takeFirst(), QVariantList {false});
    }
}

#include "TrayIconTest.moc"
