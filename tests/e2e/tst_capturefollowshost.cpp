// The add-on's capture against the real corvalent-contacts over the private bus: it follows the contact manager
// from event to event. (A contact manager that dies under it is tst_dbustransport's and tst_contactcapture's.)

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

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestCaptureFollowsHost : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    QString m_database = m_home.file(u"Contacts.cvdb"_s);
    QProcess m_host;
    DBusBackend m_backend;
    ActSession m_session;
    ContactForm m_form;
    ContactCapture m_capture{m_session, m_form};
    RecordingPrompter* m_prompter = nullptr;

    QStringList boxes() const
    {
        const auto texts = m_form.texts();
        return {texts[0], texts[1], texts[2], texts[3]};
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(QDBusConnection::sessionBus().isConnected(), "needs a session bus: run under dbus-run-session");
        auto prompter = std::make_unique<RecordingPrompter>();
        m_prompter = prompter.get();
        Prompter::install(std::move(prompter));
        host::writeSampleDatabase(m_database);
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert(u"XDG_DATA_HOME"_s, m_home.file(u"data"_s));
        m_host.setProcessEnvironment(env);
        QVERIFY(test::startHost(m_host, {m_database}));

        m_session.attachEvents(m_backend);
        m_session.OpenSession(m_backend);
        // Contact, company and the business city and phone.
        m_capture.setServiceFile(test::writeService(m_home, u"URL=h/s?|Base=2|F0=26|F1=25|F2=30|F3=35"_s, u"Follow"_s));
        // What the main window does on a position change.
        connect(&m_backend.events(), &HostEvents::OnContactPosChange, this, [this] {
            m_capture.ResetFields = true;
            m_capture.Get_Contact(false);
        });
        QVERIFY(m_capture.Get_Contact(false));
        QVERIFY(m_prompter->prompts().isEmpty());
    }

    void cleanupTestCase() { test::stopHost(m_host); }

    // Another program moves the contact manager; the boxes follow through the event alone.
    void followsTheCurrentContact()
    {
        host::ContactStore store;
        store.open(m_database);
        const qint64 target = store.allContactIds().at(7);
        QStringList expected;
        for (const int field : {26, 25, 30, 35})
            expected << store.fieldText(target, field);
        QVERIFY(boxes() != expected);

        DBusBackend other(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s));
        toObject(other.create(kProgIdDatabase)->invoke(u"Contact"_s))->invoke(u"GoTo"_s, {QString::number(target)});
        QTRY_COMPARE_WITH_TIMEOUT(boxes(), expected, 10000);
        QVERIFY(m_prompter->prompts().isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestCaptureFollowsHost)
#include "tst_capturefollowshost.moc"
