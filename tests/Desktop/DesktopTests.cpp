// SPDX-License-Identifier: GPL-3.0-or-later
#include "Platform/Desktop/ApplicationService.h"
#include "Platform/Desktop/DesktopAppearance.h"
#include "Platform/Desktop/FileManager.h"
#include "Platform/Desktop/Notifications.h"
#include "Support/Files.h"

#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QGuiApplication>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace ferrow {

namespace {

using SettingGroups = QMap<QString, QVariantMap>;

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString fileManager = QStringLiteral("org.freedesktop.FileManager1");
const QString notifications = QStringLiteral("org.freedesktop.Notifications");

/// Every service of the desktop in one, on a thread of its own since some callers wait for the answer.
class FakeDesktop : public QDBusVirtualObject {
public:
    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override
    {
        QDBusMessage reply = message.createReply();
        if (message.member() == QLatin1StringView("ReadAll")) {
            const QVariantMap values{{QStringLiteral("color-scheme"), 1U},
                                     {QStringLiteral("contrast"), 1U},
                                     {QStringLiteral("reduced-motion"), 1U}};
            reply << QVariant::fromValue(SettingGroups{{QStringLiteral("org.freedesktop.appearance"), values}});
            QThread::msleep(delay.exchange(0));
        } else if (message.member() == QLatin1StringView("OpenFile") ||
                   message.member() == QLatin1StringView("OpenDirectory")) {
            reply << QVariant::fromValue(QDBusObjectPath("/request"));
        } else if (message.member() == QLatin1StringView("Notify")) {
            reply << 1U;
        }
        connection.send(reply);
        const std::scoped_lock lock(mutex_);
        calls_.push_back(message);
        return true;
    }
    /// The first call of that name, waited for; an invalid one if none comes.
    QDBusMessage call(const char* member)
    {
        QDBusMessage found;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                const std::scoped_lock lock(mutex_);
                const auto place = std::ranges::find_if(
                    calls_, [&](const QDBusMessage& message) { return message.member() == QLatin1StringView(member); });
                if (place != calls_.end())
                    found = *place;
                return place != calls_.end();
            },
            30'000))
            << member;
        return found;
    }

    std::atomic<unsigned long> delay = 0; ///< Of the next answer about settings, in milliseconds.

private:
    std::mutex mutex_;
    std::vector<QDBusMessage> calls_;
};

class Desktop : public testing::Test {
protected:
    void SetUp() override
    {
        if (!bus_.isConnected())
            GTEST_SKIP() << "NOT TESTED: how the desktop is spoken to; there is no dbus-daemon.";
        ASSERT_TRUE(bus_.registerVirtualObject(QStringLiteral("/"), &fake_, QDBusConnection::SubPath));
        fake_.moveToThread(&thread_);
        thread_.start();
        for (const QString& service : {portal, fileManager, notifications})
            ASSERT_TRUE(bus_.registerService(service));
    }
    void TearDown() override
    {
        bus_.unregisterObject(QStringLiteral("/"), QDBusConnection::UnregisterTree);
        thread_.quit();
        thread_.wait();
    }
    /// What the portal's method of that name was given a descriptor of.
    QByteArray given(const char* method)
    {
        const auto descriptor = fake_.call(method).arguments().value(1).value<QDBusUnixFileDescriptor>();
        const std::string link = "/proc/self/fd/" + std::to_string(descriptor.fileDescriptor());
        return QByteArray::fromStdString(std::filesystem::read_symlink(link).string());
    }
    void setting(const char* group, const char* key, unsigned value)
    {
        QDBusMessage signal = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/portal/desktop"),
                                                         QStringLiteral("org.freedesktop.portal.Settings"),
                                                         QStringLiteral("SettingChanged"));
        signal << QString::fromLatin1(group) << QString::fromLatin1(key)
               << QVariant::fromValue(QDBusVariant(QVariant::fromValue(value)));
        ASSERT_TRUE(bus_.send(signal));
    }

    QDBusConnection bus_ =
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), QStringLiteral("fake"));
    QThread thread_;
    FakeDesktop fake_;
};

} // namespace

TEST_F(Desktop, saysHowItWantsToBeLookedAtAndWhenThatChanges)
{
    DesktopAppearance appearance;
    EXPECT_EQ(appearance.prefersDark(), true);
    EXPECT_TRUE(appearance.prefersMoreContrast());
    EXPECT_TRUE(appearance.prefersReducedMotion());

    const QSignalSpy changes(&appearance, &DesktopAppearance::changed);
    setting("org.gnome.desktop.interface", "color-scheme", 2);
    setting("org.freedesktop.appearance", "contrast", 1); // As it was.
    setting("org.freedesktop.appearance", "color-scheme", 2);
    setting("org.freedesktop.appearance", "reduced-motion", 0);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !appearance.prefersReducedMotion(); }, 30'000));
    EXPECT_EQ(appearance.prefersDark(), false);
    EXPECT_TRUE(appearance.prefersMoreContrast());
    EXPECT_EQ(changes.size(), 2);
}

TEST_F(Desktop, mayAnswerLate)
{
    fake_.delay = 500;
    DesktopAppearance appearance;
    EXPECT_EQ(appearance.prefersDark(), std::nullopt);
    QSignalSpy changes(&appearance, &DesktopAppearance::changed);
    EXPECT_TRUE(changes.wait(30'000));
    EXPECT_EQ(appearance.prefersDark(), true);
}

TEST_F(Desktop, showsFilesByTheirEscapedNames)
{
    FileManager::showItems(
        {FileUrl::fromPath(QByteArray("/p/a b#1%?.jpg")), FileUrl::fromPath(QByteArray("/p/caf\xe9.jpg"))});
    EXPECT_EQ(fake_.call("ShowItems").arguments().value(0).toStringList(),
              QStringList({QStringLiteral("file:///p/a%20b%231%25%3F.jpg"), QStringLiteral("file:///p/caf%E9.jpg")}));
}

TEST_F(Desktop, showsFilesAndFoldersThroughThePortalWhereNoFileManagerListens)
{
    const test::TemporaryFolder folder;
    folder.write("a.jpg", "a");
    bus_.unregisterService(fileManager);
    FileManager::showItems({folder.file("a.jpg"), folder.file("b.jpg")});
    EXPECT_EQ(given("OpenDirectory"), folder.file("a.jpg").path());
    FileManager::openFolders({folder.url()});
    EXPECT_EQ(given("OpenFile"), folder.url().path());
}

TEST_F(Desktop, opensTheFolderWhereThePortalCantShowTheFile)
{
    const test::TemporaryFolder folder;
    bus_.unregisterService(fileManager);
    FileManager::showItems({folder.file("gone.jpg")});
    EXPECT_EQ(given("OpenFile"), folder.url().path());
}

TEST_F(Desktop, isToldInPlainTextWhatItWouldTakeForMarkUp)
{
    Notifications::show(QStringLiteral("Batch finished"), QStringLiteral("<b>2</b> & 3"));
    const QVariantList arguments = fake_.call("Notify").arguments();
    EXPECT_EQ(arguments.value(3).toString(), QStringLiteral("Batch finished"));
    EXPECT_EQ(arguments.value(4).toString(), QStringLiteral("&lt;b&gt;2&lt;/b&gt; &amp; 3"));
}

TEST_F(Desktop, handsFilesToTheProgramThatRuns)
{
    const QString id = QStringLiteral("app.ferrow.Test");
    const auto connectAs = [](const char* name) {
        return QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"),
                                             QString::fromLatin1(name));
    };
    const std::vector<FileUrl> files{FileUrl::fromPath(QByteArray("/p/a b#1%?.jpg")),
                                     FileUrl::fromPath(QByteArray("/p/caf\xe9.jpg"))};
    struct Call {
        std::vector<FileUrl> files;
        QByteArray token;
        bool operator==(const Call&) const = default;
    };
    std::vector<Call> calls;
    ApplicationService running(id, connectAs("running"));
    QObject::connect(&running, &ApplicationService::called,
                     [&](const std::vector<FileUrl>& given, const QByteArray& token) {
                         calls.push_back({given, token});
                     });
    EXPECT_FALSE(running.handOver(files, {})) << "it is the one that runs";
    std::atomic<int> taken = 0;
    // Another start waits for the answer, which is given on this thread.
    QThread* other = QThread::create([&] {
        const ApplicationService second(id, connectAs("second"));
        taken += second.handOver(files, "token") ? 1 : 0;
        taken += second.handOver({}, {}) ? 1 : 0;
    });
    other->start();
    EXPECT_TRUE(QTest::qWaitFor([&] { return other->isFinished(); }, 30'000));
    other->wait();
    delete other;
    EXPECT_EQ(taken, 2);
    EXPECT_EQ(calls, (std::vector<Call>{{files, "token"}, {{}, {}}}));
    const ApplicationService alone(id, QDBusConnection(QStringLiteral("none")));
    EXPECT_FALSE(alone.handOver(files, {})) << "without a bus";
}

} // namespace ferrow

int main(int argc, char** argv)
{
    using namespace ferrow;
    // A bus that starts no services of the machine's, and that must be known before anybody asks for it.
    const test::TemporaryFolder folder;
    folder.write("bus.conf", R"(<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>
        <policy context="default"><allow send_destination="*" eavesdrop="true"/><allow eavesdrop="true"/><allow own="*"/></policy></busconfig>)");
    QProcess daemon;
    daemon.start(QStringLiteral("dbus-daemon"),
                 {QStringLiteral("--nofork"), QStringLiteral("--print-address"), QStringLiteral("--config-file"),
                  QString::fromUtf8(folder.file("bus.conf").path())});
    QByteArray address("unix:path=/nowhere");
    if (daemon.waitForStarted() && daemon.waitForReadyRead())
        address = daemon.readLine().trimmed();
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qDBusRegisterMetaType<SettingGroups>();
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    daemon.kill();
    daemon.waitForFinished();
    return status;
}
