// frmManage by its control names against a real FTP server on 127.0.0.1, with scripted answers to its messages.

#include "TestServers.h"
#include "download/ManageWindow.h"
#include "services/ServiceDefinition.h"
#include "support/RequestSupport.h"

#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QByteArray kOld = "[Settings]\r\nName=old\r\n";

// A message as the tests expect it: its style, its caption and its text, as a pattern.
QString shown(const QString& text, int style = 0, const QString& caption = u"Corvalent"_s)
{
    const QString asked = u"%1 %2: %3"_s.arg(style).arg(caption, text);
    return QRegularExpression::anchoredPattern(QRegularExpression::escape(asked));
}
// Spelled as users have always read it.
QString installed(const QString& name)
{
    return shown(name + u" was installed succesfully."_s, Prompter::Information);
}

} // namespace

class TestManageWindow : public QObject {
    Q_OBJECT

    test::TestHome m_home;
    test::ServedFolders m_served{m_home};
    test::TestServer m_ftp{u"ftp"_s, m_served.full};
    test::TestServer m_ftpEmpty{u"ftp"_s, m_served.empty};
    RecordingPrompter* m_prompter = nullptr;
    RecordingLauncher* m_launcher = nullptr;
    QPointer<ManageWindow> m_window;

    QString presets() const { return m_home.file(u"Presets"_s); }
    template <typename W>
    W* control(const QString& name) { return m_window->findChild<W*>(name); }
    // Clicks the entries of a list with Ctrl held after the first, as a user picks several; the list picked from
    // decides which of Get and Delete can be pressed.
    void pick(const QString& list, const QStringList& entries)
    {
        auto* l = control<QListWidget>(list);
        for (const QString& entry : entries) {
            const auto found = l->findItems(entry, Qt::MatchExactly);
            QVERIFY2(!found.isEmpty(), qPrintable(entry));
            QTest::mouseClick(l->viewport(), Qt::LeftButton,
                              entry == entries.first() ? Qt::NoModifier : Qt::ControlModifier,
                              l->visualItemRect(found.first()).center());
        }
        QCOMPARE(control<QPushButton>(u"cmdGet"_s)->isEnabled(), list == u"lstFiles");
        QCOMPARE(control<QPushButton>(u"cmdDelete"_s)->isEnabled(), list == u"lstPresets");
    }
    QStringList entries(const QString& list)
    {
        QStringList texts;
        auto* l = control<QListWidget>(list);
        for (int i = 0; i < l->count(); ++i)
            texts << l->item(i)->text();
        texts.sort();
        return texts;
    }

private slots:
    void init()
    {
        m_prompter = test::install<RecordingPrompter, Prompter>();
        m_launcher = test::install<RecordingLauncher, Launcher>();
        QDir(presets()).removeRecursively();
        QDir().mkpath(presets());
    }
    void cleanup() { delete m_window; }

    void steps_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QStringList>("before");    // file names there before, with other bytes than the server's
        QTest::addColumn<QStringList>("steps");     // a button clicked, or "LIST:A|B", entries picked in a list
        QTest::addColumn<int>("answer");            // to the question asked, if any
        QTest::addColumn<QStringList>("prompts");   // patterns, in any order: the server's is its folder's own
        QTest::addColumn<bool>("connected");
        QTest::addColumn<QStringList>("files");     // lstFiles afterwards
        QTest::addColumn<QStringList>("presets");   // lstPresets afterwards; the installed ones hold the server's bytes
        const QString postal = u"Postal 2.1"_s, yellow = u"Yellow pages"_s;
        const QStringList postalFile{u"Postal 2~1.isf"_s}, served{postal, yellow}, none;
        const QStringList connect{u"cmdConnect"_s};
        const QString replace = shown(u"A version of 'Postal 2.1' is already installed. Do you want to replace it "
                                      "with the servers'version?"_s,
                                      Prompter::YesNo | Prompter::Exclamation | Prompter::DefaultButton2);
        const QStringList twoInstalled{u"White~pages.isf"_s, u"Yellow pages.isf"_s};
        const QStringList deleteWhite{u"lstPresets:White.pages"_s, u"cmdDelete"_s};
        const QStringList deleteQuestion{shown(u"Are you sure you want to delete this service?"_s,
                                               Prompter::YesNo | Prompter::Critical | Prompter::DefaultButton2,
                                               u"App.title"_s)};

        QTest::newRow("replace: yes")
            << u"ftp"_s << postalFile << connect + QStringList{u"lstFiles:Postal 2.1"_s, u"cmdGet"_s}
            << int(Prompter::Yes) << QStringList{replace, installed(postal)} << true << served << QStringList{postal};
        QTest::newRow("replace: no, and on with the next")
            << u"ftp"_s << postalFile << connect + QStringList{u"lstFiles:Yellow pages|Postal 2.1"_s, u"cmdGet"_s}
            << int(Prompter::No) << QStringList{replace, installed(yellow)} << true << served << served;
        QTest::newRow("install before connecting") << u"ftp"_s << none << QStringList{u"cmdGet"_s} << 0
                                                   << QStringList{shown(u"Not in session"_s)} << false << none << none;
        QTest::newRow("install with nothing picked")
            << u"ftp"_s << none << connect + QStringList{u"cmdGet"_s} << 0
            << QStringList{shown(u"Please select the item to GET!"_s)} << true << served << none;
        QTest::newRow("a second press lists nothing anew")
            << u"ftp"_s << none << connect + connect << 0 << none << true << served << none;
        QTest::newRow("empty folder") << u"empty"_s << none << connect << 0
                                      << QStringList{shown(u"This directory is empty!"_s)} << true << none << none;
        QTest::newRow("no server there")
            << u"refused"_s << none << connect << int(Prompter::Yes)
            << QStringList{u"^4 Corvalent: InternetConnect Err: .*[Cc]ouldn't connect.*\rClose Connection and "
                           "Session\\?$"_s}
            << false << none << none;
        QTest::newRow("manual connection opens the server")
            << u"ftp"_s << none << QStringList{u"cmdFtp"_s} << 0 << none << false << none << none;
        QTest::newRow("delete: yes") << u"ftp"_s << twoInstalled << deleteWhite << int(Prompter::Yes)
                                     << deleteQuestion << false << none << QStringList{yellow};
        QTest::newRow("delete: no") << u"ftp"_s << twoInstalled << deleteWhite << int(Prompter::No) << deleteQuestion
                                    << false << none << QStringList{u"White.pages"_s, yellow};
    }
    void steps()
    {
        QFETCH(QString, server);
        QFETCH(QStringList, before);
        QFETCH(QStringList, steps);
        QFETCH(int, answer);
        QFETCH(QStringList, prompts);
        for (const QString& file : before)
            m_home.write(u"Presets/"_s + file, kOld);
        m_prompter->scriptAnswer(answer);
        const QString url = server == u"ftp" ? m_ftp.url("ftp") : server == u"empty" ? m_ftpEmpty.url("ftp")
                                                                                      : u"ftp://127.0.0.1:1/"_s;
        m_window = new ManageWindow(presets(), url);
        m_window->show();
        for (const QString& step : steps) {
            if (step.contains(u':')) {
                pick(step.section(u':', 0, 0), step.section(u':', 1).split(u'|'));
                continue;
            }
            QTest::mouseClick(control<QPushButton>(step), Qt::LeftButton);
            QTRY_VERIFY_WITH_TIMEOUT(!m_window->manage().busy(), 20000);
        }

        const QStringList expectedPrompts = prompts;
        for (const auto& p : m_prompter->prompts()) {
            const QString asked = u"%1 %2: %3"_s.arg(p.style).arg(p.caption, p.text);
            const auto found = std::find_if(prompts.begin(), prompts.end(), [&](const QString& pattern) {
                return QRegularExpression(pattern).match(asked).hasMatch();
            });
            QVERIFY2(found != prompts.end(), qPrintable(asked));
            prompts.erase(found);
        }
        QCOMPARE(prompts, QStringList());
        QTEST(m_window->manage().connected(), "connected");
        QTEST(entries(u"lstFiles"_s), "files");
        QTEST(entries(u"lstPresets"_s), "presets");
        // The folder holds what the list shows, nothing else (no temporary file), each with the bytes it should.
        QStringList there = QDir(presets()).entryList(QDir::Files | QDir::Hidden);
        for (QString& file : there) {
            const QString name = DisplayName(file.chopped(4));
            const QByteArray expected = !expectedPrompts.contains(installed(name)) ? kOld
                                        : file.startsWith(u"Postal") ? test::kServedPostal : test::kServedYellow;
            QCOMPARE(test::TestHome::read(presets() + u'/' + file), expected);
            file = name;
        }
        there.sort();
        QTEST(there, "presets");
        // Only the manual connection opens anything: the server, in the user's own program.
        QStringList opened;
        for (const auto& o : m_launcher->opened())
            opened << o.target;
        QCOMPARE(opened, steps.contains(u"cmdFtp"_s) ? QStringList{m_ftp.url("ftp")} : QStringList());
    }
};

QTEST_MAIN(TestManageWindow)
#include "tst_managewindow.moc"
