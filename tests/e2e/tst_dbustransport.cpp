// The bus transport on its own: AutomationService serving stand-in objects from a thread of its own (it stands for
// the contact manager's process, so that the add-on side may wait for answers on this thread), DBusBackend and raw
// messages calling it. Runs on the private bus of dbus-run-session.

#include "act/DBusBackend.h"
#include "dbus/AutomationService.h"
#include "support/BusSupport.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QSemaphore>
#include <QSignalSpy>
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
        if (member == u"Child"_s)
            return toVariant(std::make_shared<StandInObject>());
        if (member == u"IsSelf"_s)
            return toObject(args.value(0)).get() == this;
        if (member == u"Nothing"_s || member == kEventMemberDetach)
            return {};
        if (member == u"Hang"_s)
            return g_unhang.tryAcquire(1, 30000);
        if (member == u"Fail"_s)
            throw Error(args.value(0).toInt(), args.value(1).toString());
        if (member == u"Crash"_s)
            throw std::runtime_error("stand-in failure");
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
            events = &standIn;
            ready.release();
            exec();
        }
        QDBusConnection::disconnectFromBus(u"service"_s);
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
    AutomationPtr create() { return m_backend->create(u"Test.Object"_s); }

private slots:
    void init()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
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
        QTest::newRow("int16") << QVariant::fromValue(qint16(-7));
        QTest::newRow("int32") << QVariant(70000);
        QTest::newRow("text") << QVariant(u"Émile Zoë (514) 555-0199"_s);
        QTest::newRow("bool") << QVariant(true);
        QTest::newRow("double") << QVariant(2.5);
    }
    void valuesKeepTheirType()
    {
        QFETCH(QVariant, value);
        const QVariant echoed = create()->invoke(u"Echo"_s, {value});
        QCOMPARE(echoed.metaType(), value.metaType());
        QCOMPARE(echoed, value);
    }

    void objectsTravelBothWays()
    {
        const AutomationPtr parent = create();
        const AutomationPtr child = toObject(parent->invoke(u"Child"_s));
        QVERIFY(child);
        QCOMPARE(child->invoke(u"IsSelf"_s, {toVariant(child)}).toBool(), true);
        QCOMPARE(parent->invoke(u"IsSelf"_s, {toVariant(child)}).toBool(), false);
        QCOMPARE(parent->invoke(u"Nothing"_s), QVariant(QString())); // a text, not nothing at all
    }

    void errorsKeepNumberAndDescription_data()
    {
        QTest::addColumn<QString>("member");
        QTest::addColumn<QVariantList>("args");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("description"); // "": any
        QTest::newRow("bar in text") << u"Fail"_s << QVariantList{5, u"a|b"_s} << 5 << u"a|b"_s;
        QTest::newRow("not an Error") << u"Crash"_s << QVariantList{} << 440 << u"stand-in failure"_s;
        QTest::newRow("64-bit argument") << u"Echo"_s << QVariantList{qint64(1)} << 13 << QString();
    }
    void errorsKeepNumberAndDescription()
    {
        QFETCH(QString, member);
        QFETCH(QVariantList, args);
        QFETCH(int, number);
        QFETCH(QString, description);
        const AutomationPtr object = create();
        const auto [raisedNumber, raisedDescription] = test::raisedPair([&] { object->invoke(member, args); });
        QCOMPARE(raisedNumber, number);
        if (!description.isEmpty())
            QCOMPARE(raisedDescription, description);
        QCOMPARE(object->invoke(u"Echo"_s, {1}).toInt(), 1);
        QCOMPARE(test::raisedPair([&] { m_backend->create(u"No.Such"_s); }).first, 429);
    }

    // Messages no add-on would send, some from another client: each gets an error answer, and the service goes on
    // serving the object's own client. (An unknown path to Invoke meets the same check as another's object.)
    void hostileMessagesAreAnswered_data()
    {
        QTest::addColumn<bool>("fromOther");
        QTest::addColumn<QString>("method");
        QTest::addColumn<QVariantList>("args"); // "/own": the client's object
        QTest::addColumn<QString>("error"); // how the error text starts
        const auto path = [](const QString& p) { return QVariant::fromValue(QDBusObjectPath(p)); };
        const auto av = [](const QVariantList& l) { return QVariant::fromValue(l); };
        const QVariant own = path(u"/own"_s), unknown = path(kObjectPrefix + u"999"_s);
        QTest::newRow("unsigned argument") << false << u"Invoke"_s << QVariantList{own, u"Echo"_s, av({7u})}
                                           << u"13|"_s;
        QTest::newRow("unknown object argument")
            << false << u"Invoke"_s << QVariantList{own, u"IsSelf"_s, av({unknown})} << u"5|"_s;
        QTest::newRow("release unknown") << false << u"Release"_s << QVariantList{unknown} << u"5|"_s;
        QTest::newRow("1 MB member") << false << u"Invoke"_s << QVariantList{own, QString(1 << 20, u'm'), av({})}
                                     << u"438|"_s;
        QTest::newRow("another's object") << true << u"Invoke"_s << QVariantList{own, u"Nothing"_s, av({})} << u"5|"_s;
        QTest::newRow("release another's") << true << u"Release"_s << QVariantList{own} << u"5|"_s;
    }
    void hostileMessagesAreAnswered()
    {
        QFETCH(bool, fromOther);
        QFETCH(QString, method);
        QFETCH(QVariantList, args);
        QFETCH(QString, error);
        const QDBusConnection bus = QDBusConnection::sessionBus();
        const QVariant own = rawCall(bus, u"Create"_s, {u"Test.Object"_s}).arguments().value(0);
        for (QVariant& arg : args) {
            if (arg.value<QDBusObjectPath>().path() == u"/own"_s)
                arg = own;
        }
        const QDBusConnection caller =
            fromOther ? QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s) : bus;
        const QDBusMessage reply = rawCall(caller, method, args);
        QDBusConnection::disconnectFromBus(u"other"_s);
        QCOMPARE(reply.errorName(), kErrorName);
        QVERIFY2(reply.errorMessage().startsWith(error), qPrintable(reply.errorMessage()));
        const QDBusMessage echoed = rawCall(bus, u"Invoke"_s, {own, u"Echo"_s, QVariant::fromValue(QVariantList{3})});
        QCOMPARE(echoed.arguments().value(0).value<QDBusVariant>().variant().toInt(), 3);
    }

    void objectsGoWhenReleasedOrWhenTheirClientLeaves()
    {
        create();
        QTRY_COMPARE(g_liveObjects.load(), 0);
        {
            const QDBusConnection leaving = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"leaving"_s);
            QCOMPARE(rawCall(leaving, u"Create"_s, {u"Test.Object"_s}).type(), QDBusMessage::ReplyMessage);
            QCOMPARE(rawCall(leaving, u"Create"_s, {kProgIdEvents}).type(), QDBusMessage::ReplyMessage);
            QCOMPARE(g_liveObjects.load(), 2);
        }
        QDBusConnection::disconnectFromBus(u"leaving"_s); // without a Release
        QTRY_COMPARE(g_liveObjects.load(), 0);
    }

    // Each event with an argument or a spy of its own, so that crossed wires show; after a Detach, none until a new
    // control is made. The bus keeps the order: the last one here means all before it are.
    void eventsReachHostEventsUntilDetached()
    {
        HostEvents& h = m_backend->events();
        QSignalSpy closing(&h, &HostEvents::OnActUserWantsToClose), closed(&h, &HostEvents::OnDatabaseClose),
            changed(&h, &HostEvents::OnContactChange), lookup(&h, &HostEvents::OnContactLookupChange),
            moved(&h, &HostEvents::OnContactPosChange);
        StandInEvents* e = m_thread->events;
        QMetaObject::invokeMethod(e, [=] {
            emit e->OnActUserWantsToClose();
            emit e->OnDatabaseClose();
            emit e->OnContactChange(u"17"_s);
            emit e->OnContactLookupChange();
            emit e->OnContactPosChange(u"4"_s);
        });
        QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 1, 5000);
        QCOMPARE(moved.first(), QVariantList{u"4"_s});
        QCOMPARE(changed, QList<QVariantList>{{u"17"_s}});
        QCOMPARE(QList<qsizetype>({closing.size(), closed.size(), lookup.size()}), QList<qsizetype>({1, 1, 1}));

        const AutomationPtr control = m_backend->create(kProgIdEvents);
        control->invoke(kEventMemberDetach);
        QMetaObject::invokeMethod(e, [=] { emit e->OnContactPosChange(u"1"_s); });
        const AutomationPtr again = m_backend->create(kProgIdEvents);
        QMetaObject::invokeMethod(e, [=] { emit e->OnContactPosChange(u"2"_s); });
        QTRY_COMPARE_WITH_TIMEOUT(moved.size(), 2, 5000);
        QCOMPARE(moved.last(), QVariantList{u"2"_s});
    }

    void aHungHostTimesOut()
    {
        DBusBackend impatient(QDBusConnection::sessionBus(), 300);
        const AutomationPtr object = impatient.create(u"Test.Object"_s);
        const auto hung = test::raisedPair([&] { object->invoke(u"Hang"_s); });
        g_unhang.release(); // first, so that a failure below does not leave the service hanging
        QCOMPARE(hung, std::make_pair(440, u"The contact manager did not answer"_s));
        QCOMPARE(object->invoke(u"Echo"_s, {2}).toInt(), 2);
    }

    // Reported to a client with its events attached, not to one that has detached them.
    void aLostHostIsReportedAndItsObjectsFail()
    {
        QSignalSpy lost(&m_backend->events(), &HostEvents::hostLost);
        DBusBackend detached;
        QSignalSpy unheard(&detached.events(), &HostEvents::hostLost);
        detached.create(kProgIdEvents)->invoke(kEventMemberDetach);
        const AutomationPtr object = create();
        stopService();
        QVERIFY(lost.wait(5000));
        const auto echo = [&] { object->invoke(u"Echo"_s, {1}); };
        const auto notRunning = std::make_pair(429, u"The contact manager is not running"_s);
        QCOMPARE(test::raisedPair(echo), notRunning);
        QCOMPARE(test::raisedPair([&] { create(); }), notRunning);
        // A new contact manager does not take over the old one's objects.
        startService();
        QCOMPARE(test::raisedPair(echo), notRunning);
        QVERIFY(create());
        QCOMPARE(unheard.size(), 0); // it went out with `lost`, several round trips ago
    }
};

QTEST_GUILESS_MAIN(TestDBusTransport)
#include "tst_dbustransport.moc"
