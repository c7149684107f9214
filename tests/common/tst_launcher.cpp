#include "common/Launcher.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace corvalent;

// The desktop launcher must hand the target to the opener as one argument, byte for byte: no URL normalisation,
// no percent-encoding, no shell. A stand-in opener script records what it was given.
class TestLauncher : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void targetReachesTheOpenerUnchanged_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("blanks and ampersands") << "http://host/find.asp?city=Montreal&pc=H2X 1Y4";
        QTest::newRow("doubled scheme") << "http://https://example.org/?a=1";
        QTest::newRow("shell characters") << "http://host/?q=$(echo hi);`x`|y>z";
        QTest::newRow("file with tilde") << "/tmp/~10936986498598137458976958.htm";
    }
    void targetReachesTheOpenerUnchanged()
    {
        QFETCH(QString, target);
        const QString record = m_dir.filePath(QStringLiteral("opened.txt"));
        const QString wd = m_dir.filePath(QStringLiteral("wd.txt"));
        QFile::remove(record);
        const QString opener = m_dir.filePath(QStringLiteral("opener.sh"));
        {
            QFile script(opener);
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write(QStringLiteral("#!/bin/sh\npwd > '%1'\nprintf '%s' \"$1\" > '%2.tmp' && mv '%2.tmp' '%2'\n")
                             .arg(wd, record)
                             .toUtf8());
            script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        }
        qputenv("CORVALENT_OPENER", QFile::encodeName(opener));

        DesktopLauncher launcher;
        QVERIFY(launcher.open(target, m_dir.path()));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(record), 10000);
        QFile f(record);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(f.readAll()), target);
        QFile w(wd);
        QVERIFY(w.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(w.readAll()).trimmed(), QFileInfo(m_dir.path()).canonicalFilePath());
    }

    void missingOpenerIsReported()
    {
        qputenv("CORVALENT_OPENER", "/nonexistent/opener");
        DesktopLauncher launcher;
        QVERIFY(!launcher.open(QStringLiteral("http://example.org"), m_dir.path()));
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"
