// The add-on's capture against the real corvalent-contacts over the private bus: it follows the contact manager
// from event to event, and when the contact manager dies in the middle of the work the add-on shows the error box
// and carries on.

#include "act/ActSession.h"
#include "act/ContactCapture.h"
#include "act/ContactForm.h"
#include "act/DBusBackend.h"
#include "common/Prompter.h"
#include "store/ContactStore.h"
#include "support/BusSupport.h"
#include "support/RequestSupport.h"
#include "support/TestHome.h"

#include <QProcess>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestCaptureFollowsHost : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_database;
    QProcess m_host;
    std::unique_ptr<DBusBackend> m_backend;
    std::unique_ptr<ActSession> m_session;
    ContactForm m_form;
    std::unique_ptr<ContactCapture> m_capture;
    RecordingPrompter* m_prompter = nullptr;

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
        auto prompter = std::make_unique<RecordingPrompter>();
        m_prompter = prompter.get();
        Prompter::install(std::move(prompter));

        m_database = m_home.file(u"Contacts.cvdb"_s);
        host::writeSampleDatabase(m_database);

        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        env.insert(u"XDG_DATA_HOME"_s, m_home.file(u"data"_s));
        m_host.setProcessEnvironment(env);
        QVERIFY(test::startHost(m_host, {m_database}));

        m_backend = std::make_unique<DBusBackend>();
        m_session = std::make_unique<ActSession>();
        m_session->attachEvents(*m_backend);
        m_session->OpenSession(*m_backend);
        m_capture = std::make_unique<ContactCapture>(*m_session, m_form);
        // Contact, company and the business city and phone.
        m_capture->setServiceFile(
            test::writeService(m_home, u"URL=h/s?|Base=2|F0=26|F1=25|F2=30|F3=35"_s, u"Follow"_s));
        // What the main window does on a position change.
        connect(&m_backend->events(), &HostEvents::OnContactPosChange, this, [this] {
            m_capture->ResetFields = true;
            m_capture->Get_Contact(false);
        });
        QVERIFY(m_capture->Get_Contact(false));
        QVERIFY(m_prompter->prompts().isEmpty());
    }

    void cleanupTestCase()
    {
        m_capture.reset();
        m_session.reset();
        m_backend.reset();
        test::stopHost(m_host);
    }

    // Another program moves the contact manager; the boxes follow through the event alone.
    void followsTheCurrentContact()
    {
        host::ContactStore store;
        store.open(m_database);
        const qint64 target = store.allContactIds().at(7);
        QVERIFY(m_form.text(0) != store.fieldText(target, 26));

        DBusBackend other(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s));
        toObject(other.create(kProgIdDatabase)->invoke(u"Contact"_s))->invoke(u"GoTo"_s, {QString::number(target)});

        QTRY_COMPARE_WITH_TIMEOUT(m_form.text(0), store.fieldText(target, 26), 10000);
        QCOMPARE(m_form.text(1), store.fieldText(target, 25));
        QCOMPARE(m_form.text(2), store.fieldText(target, 30));
        QCOMPARE(m_form.text(3), store.fieldText(target, 35));
        QVERIFY(m_prompter->prompts().isEmpty());
    }

    void aDeadHostGivesTheErrorBoxAndKeepsTheBoxes()
    {
        const auto before = m_form.texts();
        test::stopHost(m_host);
        m_capture->ResetFields = true;
        QVERIFY(!m_capture->Get_Contact(false));
        QCOMPARE(m_prompter->prompts().size(), 1);
        const auto& box = m_prompter->prompts().first();
        QCOMPARE(box.caption, u"Corvalent error"_s);
        QVERIFY2(box.text.contains(u"in frmMain: Sub Get_Contact - Line # "_s), qPrintable(box.text));
        QVERIFY2(box.text.startsWith(u"Error 429"_s) || box.text.startsWith(u"Error 440"_s), qPrintable(box.text));
        QCOMPARE(m_form.texts(), before);
    }
};

QTEST_GUILESS_MAIN(TestCaptureFollowsHost)
#include "tst_capturefollowshost.moc"
