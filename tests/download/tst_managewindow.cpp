// frmManage by its control names against a real FTP server on 127.0.0.1, with scripted answers to its messages.

#include "TestServers.h"
#include "common/Launcher.h"
#include "common/Prompter.h"
#include "download/ManageWindow.h"
#include "services/ServiceDefinition.h"

#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

const QByteArray kOld = "[Settings]\r\nName=old\r\n";

// A message as the tests compare it: its style, its caption and its text.
QString shown(const QString& text, int style = 0, const QString& caption = u"Corvalent"_s)
{
    return u"%1 %2: %3"_s.arg(style).arg(caption, text);
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
    void open(const QString& url)
    {
        m_window = new ManageWindow(presets(), url);
        m_window->show();
    }
    template <typename W>
    W* control(const QString& name) { return m_window->findChild<W*>(name); }
    void click(const QString& button)
    {
        QTest::mouseClick(control<QPushButton>(button), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!m_window->manage().busy(), 20000);
    }
    // Clicks the entries of a list with Ctrl held after the first, as a user picks several.
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
    QStringList asked() const
    {
        QStringList texts;
        for (const auto& p : m_prompter->prompts())
            texts << shown(p.text, p.style, p.caption);
        return texts;
    }

private slots:
    void init()
    {
        auto prompter = std::make_unique<RecordingPrompter>();
        m_prompter = prompter.get();
        Prompter::install(std::move(prompter));
        auto launcher = std::make_unique<RecordingLauncher>();
        m_launcher = launcher.get();
        Launcher::install(std::move(launcher));
        QDir(presets()).removeRecursively();
        QDir().mkpath(presets());
    }
    void cleanup() { delete m_window; }

    void install_data()
    {
        QTest::addColumn<QStringList>("installed"); // file names there before, with other bytes than the server's
        QTest::addColumn<QStringList>("picked");
        QTest::addColumn<int>("answer"); // to the question whether to replace
        QTest::addColumn<QStringList>("prompts"); // in any order: the server's is the folder's own there
        QTest::addColumn<QStringList>("presets"); // lstPresets afterwards
        QTest::addColumn<QStringList>("replaced"); // files that now hold the server's bytes
        const QString postal = u"Postal 2.1"_s, yellow = u"Yellow pages"_s;
        const QString postalFile = u"Postal 2~1.isf"_s;
        const int replaceStyle = Prompter::YesNo | Prompter::Exclamation | Prompter::DefaultButton2;
        // Spelled as users have always read them.
        const auto installed = [](const QString& name) {
            return shown(name + u" was installed succesfully."_s, Prompter::Information);
        };
        const auto replace = [&](const QString& name) {
            return shown(u"A version of '%1' is already installed. Do you want to replace it with the servers'version?"_s
                         .arg(name), replaceStyle);
        };
        QTest::newRow("replace: yes") << QStringList{postalFile} << QStringList{postal} << int(Prompter::Yes)
                                      << QStringList{replace(postal), installed(postal)} << QStringList{postal}
                                      << QStringList{postalFile};
        QTest::newRow("replace: no, and on with the next")
            << QStringList{postalFile} << QStringList{yellow, postal} << int(Prompter::No)
            << QStringList{replace(postal), installed(yellow)} << QStringList{postal, yellow}
            << QStringList{u"Yellow pages.isf"_s};
    }
    void install()
    {
        QFETCH(QStringList, installed);
        QFETCH(QStringList, picked);
        QFETCH(int, answer);
        QFETCH(QStringList, replaced);
        QFETCH(QStringList, prompts);
        for (const QString& file : installed)
            m_home.write(u"Presets/"_s + file, kOld);
        m_prompter->scriptAnswer(answer);
        open(m_ftp.url("ftp"));
        click(u"cmdConnect"_s);
        QCOMPARE(entries(u"lstFiles"_s), (QStringList{u"Postal 2.1"_s, u"Yellow pages"_s}));
        // The server's order is the list's; pick them in the order given, the list installs from the top.
        pick(u"lstFiles"_s, picked);
        click(u"cmdGet"_s);
        QStringList said = asked();
        said.sort();
        prompts.sort();
        QCOMPARE(said, prompts);
        QTEST(entries(u"lstPresets"_s), "presets");
        const QStringList there = QDir(presets()).entryList(QDir::Files | QDir::Hidden);
        for (const QString& file : there) {
            const QByteArray expected = !replaced.contains(file) ? kOld
                                        : file.startsWith(u"Postal") ? test::kServedPostal : test::kServedYellow;
            QCOMPARE(test::TestHome::read(presets() + u'/' + file), expected);
        }
        // Nothing else: no temporary file left behind.
        QCOMPARE(there.size(), entries(u"lstPresets"_s).size());
    }

    void messages_data()
    {
        QTest::addColumn<QString>("server");
        QTest::addColumn<QStringList>("clicks");
        QTest::addColumn<QString>("prompt"); // a pattern; "" when nothing is asked
        QTest::addColumn<bool>("connected");
        QTest::addColumn<int>("listed");
        const auto exactly = [](const QString& text) {
            return QRegularExpression::anchoredPattern(QRegularExpression::escape(shown(text)));
        };
        QTest::newRow("install before connecting")
            << u"ftp"_s << QStringList{u"cmdGet"_s} << exactly(u"Not in session"_s) << false << 0;
        QTest::newRow("install with nothing picked") << u"ftp"_s << QStringList{u"cmdConnect"_s, u"cmdGet"_s}
                                                     << exactly(u"Please select the item to GET!"_s) << true << 2;
        QTest::newRow("a second press lists nothing anew")
            << u"ftp"_s << QStringList{u"cmdConnect"_s, u"cmdConnect"_s} << QString() << true << 2;
        QTest::newRow("empty folder") << u"empty"_s << QStringList{u"cmdConnect"_s}
                                      << exactly(u"This directory is empty!"_s) << true << 0;
        // Answered Yes, as the question suggests.
        QTest::newRow("no server there")
            << u"refused"_s << QStringList{u"cmdConnect"_s}
            << u"^4 Corvalent: InternetConnect Err: .*[Cc]ouldn't connect.*\rClose Connection and Session\\?$"_s
            << false << 0;
        QTest::newRow("manual connection opens the server")
            << u"ftp"_s << QStringList{u"cmdFtp"_s} << QString() << false << 0;
    }
    void messages()
    {
        QFETCH(QString, server);
        QFETCH(QStringList, clicks);
        QFETCH(QString, prompt);
        open(server == u"ftp" ? m_ftp.url("ftp") : server == u"empty" ? m_ftpEmpty.url("ftp") : u"ftp://127.0.0.1:1/"_s);
        for (const QString& button : clicks)
            click(button);
        const QStringList said = asked();
        QCOMPARE(said.size(), prompt.isEmpty() ? 0 : 1);
        if (!prompt.isEmpty())
            QVERIFY2(QRegularExpression(prompt).match(said.first()).hasMatch(), qPrintable(said.first()));
        QTEST(m_window->manage().connected(), "connected");
        QTEST(int(control<QListWidget>(u"lstFiles"_s)->count()), "listed");
        // Only the manual connection opens anything: the server, in the user's own program.
        QStringList opened;
        for (const auto& o : m_launcher->opened())
            opened << o.target;
        QCOMPARE(opened, clicks.contains(u"cmdFtp"_s) ? QStringList{m_ftp.url("ftp")} : QStringList());
    }

    void deleteAsks_data()
    {
        QTest::addColumn<int>("answer");
        QTest::addColumn<bool>("kept");
        QTest::newRow("yes") << int(Prompter::Yes) << false;
        QTest::newRow("no") << int(Prompter::No) << true;
    }
    void deleteAsks()
    {
        QFETCH(int, answer);
        m_home.write(u"Presets/White~pages.isf"_s, kOld);
        m_home.write(u"Presets/Yellow pages.isf"_s, kOld);
        m_prompter->scriptAnswer(answer);
        open(m_ftp.url("ftp"));
        pick(u"lstPresets"_s, {u"White.pages"_s});
        QVERIFY(!control<QPushButton>(u"cmdGet"_s)->isEnabled());
        QVERIFY(control<QPushButton>(u"cmdDelete"_s)->isEnabled());
        click(u"cmdDelete"_s);
        QCOMPARE(asked(), QStringList{shown(u"Are you sure you want to delete this service?"_s,
                                            Prompter::YesNo | Prompter::Critical | Prompter::DefaultButton2,
                                            u"App.title"_s)});
        QTEST(QFile::exists(presets() + u"/White~pages.isf"_s), "kept");
        QTEST(entries(u"lstPresets"_s).contains(u"White.pages"_s), "kept");
        QVERIFY(QFile::exists(presets() + u"/Yellow pages.isf"_s));
    }
};

QTEST_MAIN(TestManageWindow)
#include "tst_managewindow.moc"
