#include "common/Launcher.h"
#include "support/TestHome.h"

#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace corvalent;
using corvalent::test::TestHome;

// The desktop launcher must hand the target to the opener as one argument, byte for byte: no URL normalisation,
// no percent-encoding, no shell. A stand-in opener script records what it was given and the folder it ran in.
class TestLauncher : public QObject {
    Q_OBJECT

    TestHome m_home;
    DesktopLauncher m_launcher;
    const QString m_record = m_home.file(QStringLiteral("opened.txt"));

private slots:
    void initTestCase()
    {
        const QString opener = m_home.write(
            QStringLiteral("opener.sh"),
            QStringLiteral("#!/bin/sh\npwd > '%1.wd'\nprintf '%s' \"$1\" > '%1.tmp' && mv '%1.tmp' '%1'\n")
                .arg(m_record)
                .toUtf8());
        QVERIFY(QFile::setPermissions(opener, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        qputenv("CORVALENT_OPENER", QFile::encodeName(opener));
    }

    // Blanks, ampersands, a doubled scheme and shell characters all reach it as they were.
    void targetReachesTheOpenerUnchanged()
    {
        const QString target =
            QStringLiteral("http://https://host/find.asp?city=Montreal&pc=H2X 1Y4&q=$(echo hi);`x`|y>z");
        QVERIFY(m_launcher.open(target, m_home.path()));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(m_record), 10000);
        QCOMPARE(QString::fromUtf8(TestHome::read(m_record)), target);
        QCOMPARE(QString::fromUtf8(TestHome::read(m_record + QStringLiteral(".wd"))).trimmed(),
                 QFileInfo(m_home.path()).canonicalFilePath());
    }

    void missingOpenerIsReported()
    {
        qputenv("CORVALENT_OPENER", "/nonexistent/opener");
        QVERIFY(!DesktopLauncher().open(QStringLiteral("http://example.org"), m_home.path()));
    }
};

QTEST_GUILESS_MAIN(TestLauncher)
#include "tst_launcher.moc"
