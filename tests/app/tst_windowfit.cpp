// The main window on a 1366x768 screen at 200% scaling, where it has 683x384 pixels to itself: whole on the screen,
// with GO reachable.

#include "WindowFixture.h"

#include <QScreen>
#include <QScrollArea>
#include <QTemporaryDir>

using namespace corvalent;
using namespace Qt::StringLiterals;

class TestWindowFit : public QObject {
    Q_OBJECT

private slots:
    void goReachableOnASmallScaledScreen()
    {
        test::WindowFixture m;
        MainWindow& w = m.start();
        QVERIFY(m.started);
        QVERIFY(QTest::qWaitForWindowExposed(&w));
        const QRect screen = w.screen()->availableGeometry();
        QCOMPARE(screen.size(), QSize(683, 384));
        QVERIFY(screen.contains(w.frameGeometry()));
        auto* go = m.widget<QPushButton>(u"cmdGO"_s);
        QVERIFY(go->isVisible());
        QVERIFY(screen.contains(QRect(go->mapToGlobal(QPoint()), go->size())));
        // What does not fit scrolls: the last box can be brought into view.
        m.widget<QScrollArea>(u"scrMain"_s)->ensureWidgetVisible(m.box(9));
        QTRY_VERIFY(!m.box(9)->visibleRegion().isEmpty());
    }
};

int main(int argc, char** argv)
{
    QTemporaryDir folder;
    const QString config = folder.filePath(u"screens.json"_s);
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return 2;
    file.write(R"({"screens": [{"name": "small", "x": 0, "y": 0, "width": 1366, "height": 768,
                   "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})");
    file.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + config.toLocal8Bit());
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication app(argc, argv);
    TestWindowFit test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowfit.moc"
