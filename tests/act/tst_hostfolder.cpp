// Finding the contact manager's folder the way the desktop finds the program for its database files, on a
// made-up desktop: an xdg-mime that knows one answer, XDG data folders and a PATH of our own.

#include "act/HostFolder.h"

#include "support/TestHome.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestHostFolder : public QObject {
    Q_OBJECT

    test::TestHome m_home;

    QString at(const QString& relative) const { return m_home.file(relative); }
    void script(const QString& relative, const QByteArray& body) const
    {
        QFile(m_home.write(relative, "#!/bin/sh\n" + body)).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }

private slots:
    void init()
    {
        QDir(at(u"t"_s)).removeRecursively();
        qunsetenv("CORVALENT_CONTACTS_FOLDER");
        qputenv("XDG_DATA_HOME", QFile::encodeName(at(u"t/home"_s)));
        qputenv("XDG_DATA_DIRS", QFile::encodeName(at(u"t/local:"_s) + at(u"t/system"_s)));
        qputenv("PATH", QFile::encodeName(at(u"t/bin:"_s) + at(u"t/usr/bin"_s)));
    }

    // Each row sets up: "mime=ANSWER" (xdg-mime's answer for our type), "desktop=DIR/NAME:EXEC" (a .desktop file
    // in an XDG data folder), "program=PATH" (an executable), "link=PATH:TARGET", "fmt=FOLDER" (a Phone.fmt),
    // "env=FOLDER". Paths are below the test's folder.
    void find_data()
    {
        QTest::addColumn<QStringList>("setup");
        QTest::addColumn<QString>("expected"); // "" or a path below the test's folder
        const QStringList installed{u"mime=corvalent-contacts.desktop"_s,
                                    u"desktop=t/system/applications/corvalent-contacts.desktop:corvalent-contacts %f"_s,
                                    u"program=t/usr/bin/corvalent-contacts"_s};
        QTest::newRow("no Phone.fmt in share: the program's folder") << installed << u"t/usr/bin"_s;
        QTest::newRow("the variable wins") << installed + QStringList{u"env=t/elsewhere"_s} << u"t/elsewhere"_s;
        QTest::newRow("data home before data dirs")
            << installed + QStringList{u"desktop=t/home/applications/corvalent-contacts.desktop:\""_s + at(u"t/my bin/cc"_s) + u"\" %f"_s,
                                       u"program=t/my bin/cc"_s}
            << u"t/my bin"_s;
        QTest::newRow("a dash of the ID is a folder")
            << QStringList{u"mime=corvalent-contacts.desktop"_s, u"desktop=t/local/applications/corvalent/contacts.desktop:cc"_s,
                           u"program=t/bin/cc"_s}
            << u"t/bin"_s;
        QTest::newRow("a linked program: share beside the real one")
            << QStringList{u"mime=c.desktop"_s, u"desktop=t/system/applications/c.desktop:cc"_s, u"program=t/opt/cc/bin/cc"_s,
                           u"link=t/bin/cc:t/opt/cc/bin/cc"_s, u"fmt=t/opt/cc/share/corvalent-contacts"_s}
            << u"t/opt/cc/share/corvalent-contacts"_s;
        QTest::newRow("no xdg-mime") << QStringList{u"desktop=t/system/applications/c.desktop:cc"_s, u"program=t/bin/cc"_s}
                                     << u""_s;
        QTest::newRow("program not on PATH")
            << QStringList{u"mime=c.desktop"_s, u"desktop=t/system/applications/c.desktop:nowhere %f"_s} << u""_s;
    }
    void find()
    {
        QFETCH(QStringList, setup);
        QFETCH(QString, expected);
        for (const QString& item : setup) {
            const QString kind = item.section(u'=', 0, 0);
            const QString value = item.section(u'=', 1);
            if (kind == u"mime"_s) {
                script(u"t/bin/xdg-mime"_s, "[ \"$*\" = \"query default application/x-corvalent-contacts\" ] || exit 5\n"
                                            "echo '" + value.toUtf8() + "'\n");
            } else if (kind == u"desktop"_s) {
                m_home.write(value.section(u':', 0, 0), "[Desktop Action x]\nExec=wrong\n[Desktop Entry]\nName=C\nExec="
                                                            + value.section(u':', 1).toUtf8() + "\n");
            } else if (kind == u"program"_s) {
                script(value, "exit 0\n");
            } else if (kind == u"link"_s) {
                QVERIFY(QFile::link(at(value.section(u':', 1)), at(value.section(u':', 0, 0))));
            } else if (kind == u"fmt"_s) {
                m_home.write(value + u"/Phone.fmt"_s, "1\t###-####\n");
            } else if (kind == u"env"_s) {
                qputenv("CORVALENT_CONTACTS_FOLDER", QFile::encodeName(at(value)));
            }
        }
        QCOMPARE(FindHostFolder(), expected.isEmpty() ? QString() : QDir::cleanPath(at(expected)));
    }
};

QTEST_GUILESS_MAIN(TestHostFolder)
#include "tst_hostfolder.moc"
