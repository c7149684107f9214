// The bus transport on its own: AutomationService serving stand-in objects from a thread of its own (it stands for
// the contact manager's process, so that the add-on side may wait for answers on this thread), DBusBackend and raw
// messages calling it. Runs on the private bus of dbus-run-session.

#include "act/DBusBackend.h"
#include "common/Error.h"
#include "dbus/AutomationService.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>
#include <stdexcept>

using namespace corvalent;
using namespace corvalent::dbuswire;
using namespace Qt::StringLiterals;

namespace {

std::atomic<int> g_liveObjects{0};
QSemaphore g_unhang;

class StandInObject : public AutomationObject {
public:
    StandInObject() { ++g_liveObjects; }
    ~StandInObject() override { --g_liveObjects; }

    QVariant invoke(const QString& member, const QVariantList& args) override
    {
        if (member == u"Echo"_s)
            return args.value(0);
        if (member == u"TypeName"_s)
            return QString::fromLatin1(args.value(0).typeName());
        if (member == u"Child"_s)
            return toVariant(std::make_shared<StandInObject>());
        if (member == u"IsSelf"_s)
            return toObject(args.value(0)).get() == this;
        if (member == u"Nothing"_s || member == kEventMemberDetach)
            return {};
        if (member == u"Fail"_s)
            throw Error(args.value(0).toInt(), args.value(1).toString());
        if (member == u"Crash"_s)
            throw std::runtime_error("stand-in failure");
        if (member == u"Hang"_s)
            return g_unhang.tryAcquire(1, 30000);
        throw Error(ErrorNumber::MemberNotSupported);
    }
};

class StandInEvents : public QObject {
    Q_OBJECT
signals:
    void OnActUserWantsToClose();
    void OnDatabaseClose();
    void OnContactChange(const QString& contactId);
    void OnContactLookupChange();
    void OnContactPosChange(const QString& contactId);
};

// The serving side, with a bus connection of its own.
class ServiceThread : public QThread {
public:
    QSemaphore ready;
    host::AutomationService* service = nullptr;
    StandInEvents* events = nullptr;
    host::AutomationService::Start result{};

    void run() override
    {
        {
            QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"service"_s);
            StandInEvents standIn;
            host::AutomationService serving(
                [](const QString& progId) -> AutomationPtr {
                    if (progId == u"Test.Object"_s || progId == kProgIdEvents)
                        return std::make_shared<StandInObject>();
                    throw Error(ErrorNumber::CannotCreateObject);
                },
                &standIn, bus);
            result = serving.start();
            service = &serving;
            events = &standIn;
            ready.release();
            exec();
            service = nullptr;
            events = nullptr;
        }
        QDBusConnection::disconnectFromBus(u"service"_s);
    }

    int objectCount()
    {
        int n = -1;
        QMetaObject::invokeMethod(service, [&] { n = service->objectCount(); }, Qt::BlockingQueuedConnection);
        return n;
    }
};

QDBusMessage rawCall(const QDBusConnection& bus, const QString& method, const QVariantList& args)
{
    QDBusMessage call = QDBusMessage::createMethodCall(kBusName, kRootPath, kInterface, method);
    call.setArguments(args);
    return bus.call(call, QDBus::Block, kCallTimeoutMs);
}

} // namespace

class TestDBusTransport : public QObject {
    Q_OBJECT

    std::unique_ptr<ServiceThread> m_thread;
    std::unique_ptr<DBusBackend> m_backend;

    void startService()
    {
        m_thread = std::make_unique<ServiceThread>();
        m_thread->start();
        QVERIFY(m_thread->ready.tryAcquire(1, 10000));
        QCOMPARE(m_thread->result, host::AutomationService::Start::Serving);
    }
    void stopService()
    {
        m_thread->quit();
        QVERIFY(m_thread->wait(10000));
        m_thread.reset();
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
    }
    void init()
    {
        startService();
        m_backend = std::make_unique<DBusBackend>();
    }
    void cleanup()
    {
        m_backend.reset();
        if (m_thread)
            stopService();
        QTRY_COMPARE(g_liveObjects.load(), 0);
    }

    void valuesKeepTheirType_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("typeName");
        QTest::newRow("int16") << QVariant::fromValue(qint16(-7)) << u"short"_s;
        QTest::newRow("int32") << QVariant(70000) << u"int"_s;
        QTest::newRow("text") << QVariant(u"Émile Zoë (514) 555-0199"_s) << u"QString"_s;
        QTest::newRow("empty text") << QVariant(QString()) << u"QString"_s;
        QTest::newRow("1 MB text") << QVariant(QString(1 << 20, u'x')) << u"QString"_s;
        QTest::newRow("bool") << QVariant(true) << u"bool"_s;
        QTest::newRow("double") << QVariant(2.5) << u"double"_s;
    }
    void valuesKeepTheirType()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, typeName);
        const AutomationPtr object = m_backend->create(u"Test.Object"_s);
        QCOMPARE(object->invoke(u"TypeName"_s, {value}).toString(), typeName);
        const QVariant echoed = object->invoke(u"Echo"_s, {value});
        QCOMPARE(echoed.metaType(), value.metaType());
        QCOMPARE(echoed, value);
    }

    void objectsTravelBothWays()
    {
        const AutomationPtr parent = m_backend->create(u"Test.Object"_s);
        const AutomationPtr child = toObject(parent->invoke(u"Child"_s));
        QVERIFY(child);
        QCOMPARE(child->invoke(u"IsSelf"_s, {toVariant(child)}).toBool(), true);
        QCOMPARE(parent->invoke(u"IsSelf"_s, {toVariant(child)}).toBool(), false);
        const QVariant nothing = parent->invoke(u"Nothing"_s);
        QCOMPARE(nothing.metaType(), QMetaType::fromType<QString>());
        QVERIFY(nothing.toString().isEmpty());
    }

    void errorsKeepNumberAndDescription_data()
    {
        QTest::addColumn<QString>("member");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("description");
        QTest::newRow("model error") << u"Fail"_s << QVariantList{5, u"Bad row"_s} << 5 << u"Bad row"_s;
        QTest::newRow("bar in text") << u"Fail"_s << QVariantList{440, u"a|b"_s} << 440 << u"a|b"_s;
        QTest::newRow("not an Error") << u"Crash"_s << QVariantList{} << 440 << u"stand-in failure"_s;
        QTest::newRow("unknown member") << u"Nope"_s << QVariantList{} << 438 << standardDescription(438);
        QTest::newRow("64-bit argument") << u"Echo"_s << QVariantList{qint64(1)} << 13 << QString();
        QTest::newRow("list argument") << u"Echo"_s << QVariantList{QStringList{u"a"_s}} << 13 << QString();
    }
    void errorsKeepNumberAndDescription()
    {
        QFETCH(QString, member);
        QFETCH(QVariantList, args);
        QFETCH(int, number);
        QFETCH(QString, description);
        const AutomationPtr object = m_backend->create(u"Test.Object"_s);
        try {
            object->invoke(member, args);
            QFAIL("no error");
        } catch (const Error& e) {
            QCOMPARE(e.number(), number);
            if (!description.isEmpty())
                QCOMPARE(e.description(), description);
        }
        QCOMPARE(object->invoke(u"Echo"_s, {1}).toInt(), 1);
    }

    void unknownProgIdCannotBeCreated()
    {
        try {
            m_backend->create(u"No.Such"_s);
            QFAIL("no error");
        } catch (const Error& e) {
            QCOMPARE(e.number(), 429);
        }
    }

    // Messages no add-on would send: each gets an error answer and the service goes on serving.
    void hostileMessagesAreAnswered_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<QString>("error");
        const auto path = [](const QString& p) { return QVariant::fromValue(QDBusObjectPath(p)); };
        const auto av = [](const QVariantList& l) { return QVariant::fromValue(l); };
        QTest::newRow("unknown path") << u"Invoke"_s << QVariantList{path(kObjectPrefix + u"999"_s), u"Echo"_s, av({})}
                                      << u"5|"_s;
        QTest::newRow("root as object") << u"Invoke"_s << QVariantList{path(kRootPath), u"Echo"_s, av({})} << u"5|"_s;
        QTest::newRow("unsigned argument") << u"Invoke"_s << QVariantList{path(u"/placeholder"_s), u"Echo"_s, av({7u})} << u"13|"_s;
        QTest::newRow("nested array") << u"Invoke"_s
                                      << QVariantList{path(u"/placeholder"_s), u"Echo"_s, av({QVariant::fromValue(QVariantList{1})})}
                                      << u"13|"_s;
        QTest::newRow("unknown object argument")
            << u"Invoke"_s << QVariantList{path(u"/placeholder"_s), u"IsSelf"_s, av({path(kObjectPrefix + u"999"_s)})} << u"5|"_s;
        QTest::newRow("wrong signature") << u"Invoke"_s << QVariantList{path(u"/placeholder"_s), u"Echo"_s, u"x"_s}
                                         << u"org.freedesktop.DBus.Error"_s;
        QTest::newRow("Create with a number") << u"Create"_s << QVariantList{7} << u"org.freedesktop.DBus.Error"_s;
        QTest::newRow("release unknown") << u"Release"_s << QVariantList{path(kObjectPrefix + u"999"_s)} << u"5|"_s;
        QTest::newRow("no such method") << u"Destroy"_s << QVariantList{} << u"org.freedesktop.DBus.Error"_s;
        QTest::newRow("1 MB member") << u"Invoke"_s << QVariantList{path(u"/placeholder"_s), QString(1 << 20, u'm'), av({})}
                                     << u"438|"_s;
    }
    void hostileMessagesAreAnswered()
    {
        QFETCH(QString, method);
        QFETCH(QVariantList, args);
        QFETCH(QString, error);
        const QDBusConnection bus = QDBusConnection::sessionBus();
        // "/placeholder" stands for a real object of this client.
        const QDBusMessage created = rawCall(bus, u"Create"_s, {u"Test.Object"_s});
        QCOMPARE(created.type(), QDBusMessage::ReplyMessage);
        for (QVariant& arg : args) {
            if (arg.metaType() == QMetaType::fromType<QDBusObjectPath>() && arg.value<QDBusObjectPath>().path() == u"/placeholder"_s)
                arg = created.arguments().value(0);
        }
        const QDBusMessage reply = rawCall(bus, method, args);
        QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
        if (error.contains(u'|')) {
            QCOMPARE(reply.errorName(), kErrorName);
            QVERIFY2(reply.errorMessage().startsWith(error), qPrintable(reply.errorMessage()));
        } else {
            QVERIFY2(reply.errorName().startsWith(error), qPrintable(reply.errorName()));
        }
        const QDBusMessage echoed =
            rawCall(bus, u"Invoke"_s, {created.arguments().value(0), u"Echo"_s, QVariant::fromValue(QVariantList{3})});
        QCOMPARE(echoed.type(), QDBusMessage::ReplyMessage);
        QCOMPARE(echoed.arguments().value(0).value<QDBusVariant>().variant().toInt(), 3);
    }

    void clientsReachOnlyTheirOwnObjects()
    {
        QDBusConnection other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s);
        const QDBusMessage created = rawCall(QDBusConnection::sessionBus(), u"Create"_s, {u"Test.Object"_s});
        const QVariant path = created.arguments().value(0);
        const QVariant noArgs = QVariant::fromValue(QVariantList{});
        QVERIFY(rawCall(other, u"Invoke"_s, {path, u"Nothing"_s, noArgs}).errorMessage().startsWith(u"5|"_s));
        QVERIFY(rawCall(other, u"Release"_s, {path}).errorMessage().startsWith(u"5|"_s));
        QCOMPARE(rawCall(QDBusConnection::sessionBus(), u"Invoke"_s, {path, u"Nothing"_s, noArgs}).type(),
                 QDBusMessage::ReplyMessage);
        QDBusConnection::disconnectFromBus(u"other"_s);
    }

    void objectsGoWhenReleasedOrWhenTheirClientLeaves()
    {
        {
            const AutomationPtr object = m_backend->create(u"Test.Object"_s);
            QCOMPARE(m_thread->objectCount(), 1);
        }
        QTRY_COMPARE(m_thread->objectCount(), 0);

        {
            const QDBusConnection leaving = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"leaving"_s);
            QCOMPARE(rawCall(leaving, u"Create"_s, {u"Test.Object"_s}).type(), QDBusMessage::ReplyMessage);
            QCOMPARE(rawCall(leaving, u"Create"_s, {kProgIdEvents}).type(), QDBusMessage::ReplyMessage);
            QCOMPARE(m_thread->objectCount(), 2);
        }
        QDBusConnection::disconnectFromBus(u"leaving"_s); // without a Release
        QTRY_COMPARE(m_thread->objectCount(), 0);
        QTRY_COMPARE(g_liveObjects.load(), 0);
    }

    void eventsReachHostEvents_data()
    {
        QTest::addColumn<QByteArray>("signal");
        QTest::addColumn<QVariantList>("args");
        QTest::newRow("user wants to close") << QByteArray(SIGNAL(OnActUserWantsToClose())) << QVariantList{};
        QTest::newRow("database close") << QByteArray(SIGNAL(OnDatabaseClose())) << QVariantList{};
        QTest::newRow("contact change") << QByteArray(SIGNAL(OnContactChange(QString))) << QVariantList{u"17"_s};
        QTest::newRow("lookup change") << QByteArray(SIGNAL(OnContactLookupChange())) << QVariantList{};
        QTest::newRow("position change") << QByteArray(SIGNAL(OnContactPosChange(QString))) << QVariantList{u"4"_s};
    }
    void eventsReachHostEvents()
    {
        QFETCH(QByteArray, signal);
        QFETCH(QVariantList, args);
        QSignalSpy spy(&m_backend->events(), signal.constData());
        // SIGNAL() puts a code digit before the signature.
        const QByteArray name = signal.mid(1, signal.indexOf('(') - 1);
        if (args.isEmpty())
            QVERIFY(QMetaObject::invokeMethod(m_thread->events, name.constData(), Qt::QueuedConnection));
        else
            QVERIFY(QMetaObject::invokeMethod(m_thread->events, name.constData(), Qt::QueuedConnection,
                                              Q_ARG(QString, args.value(0).toString())));
        QVERIFY(spy.wait(5000));
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0), args);
    }

    void detachSilencesEventsUntilANewControl()
    {
        QSignalSpy spy(&m_backend->events(), &HostEvents::OnContactPosChange);
        const AutomationPtr control = m_backend->create(kProgIdEvents);
        StandInEvents* events = m_thread->events;
        control->invoke(kEventMemberDetach);
        QMetaObject::invokeMethod(events, [=] { emit events->OnContactPosChange(u"1"_s); });
        const AutomationPtr again = m_backend->create(kProgIdEvents);
        QMetaObject::invokeMethod(events, [=] { emit events->OnContactPosChange(u"2"_s); });
        QVERIFY(spy.wait(5000));
        // The bus keeps the order: had the first come through, it would have come first.
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy.at(0).at(0).toString(), u"2"_s);
    }

    void aHungHostTimesOut()
    {
        DBusBackend impatient(QDBusConnection::sessionBus(), 300);
        const AutomationPtr object = impatient.create(u"Test.Object"_s);
        try {
            object->invoke(u"Hang"_s);
            QFAIL("no error");
        } catch (const Error& e) {
            QCOMPARE(e.number(), 440);
            QCOMPARE(e.description(), u"The contact manager did not answer"_s);
        }
        g_unhang.release();
        QCOMPARE(object->invoke(u"Echo"_s, {2}).toInt(), 2);
    }

    void aLostHostIsReportedAndItsObjectsFail()
    {
        QSignalSpy lost(&m_backend->events(), &HostEvents::hostLost);
        const AutomationPtr object = m_backend->create(u"Test.Object"_s);
        stopService();
        QVERIFY(lost.wait(5000));
        for (int round = 0; round < 2; ++round) {
            try {
                object->invoke(u"Echo"_s, {1});
                QFAIL("no error");
            } catch (const Error& e) {
                QCOMPARE(e.number(), 429);
                QCOMPARE(e.description(), u"The contact manager is not running"_s);
            }
            // A new contact manager does not take over the old one's objects.
            if (round == 0)
                startService();
        }
        QVERIFY(m_backend->create(u"Test.Object"_s));
    }
};

QTEST_GUILESS_MAIN(TestDBusTransport)
#include "tst_dbustransport.moc"
