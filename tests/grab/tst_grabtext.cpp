// Which window a grab copies from, and what it makes of the text that comes back.

#include "grab/GrabText.h"
#include "support/ScriptedDesktop.h"

#include <QTest>

using namespace corvalent;
using namespace Qt::StringLiterals;

namespace {

// "title" then ";"-separated marks: hidden, child, tool, owner=N, mute (never copies), class=NAME. The selection a
// window copies is "from N", N being its place from the top, counted from 1.
QList<test::ScriptedWindow> parseWindows(const QStringList& lines)
{
    QList<test::ScriptedWindow> windows;
    for (const QString& line : lines) {
        const QStringList marks = line.split(u';');
        test::ScriptedWindow w;
        w.title = marks.first();
        w.selection = u"from %1"_s.arg(windows.size() + 1);
        for (const QString& mark : marks.mid(1)) {
            if (mark == u"hidden")
                w.visible = false;
            else if (mark == u"child")
                w.child = true;
            else if (mark == u"tool")
                w.tool = true;
            else if (mark == u"mute")
                w.copies = false;
            else if (mark == u"stays behind")
                w.activates = false;
            else if (mark.startsWith(u"owner="))
                w.owner = mark.mid(6).toULongLong();
            else if (mark.startsWith(u"class="))
                w.programNames << mark.mid(6);
        }
        windows << w;
    }
    return windows;
}

} // namespace

class TestGrabText : public QObject {
    Q_OBJECT
private slots:
    void findsTheBrowser_data()
    {
        QTest::addColumn<QStringList>("windows"); // topmost first; the first is our own window
        QTest::addColumn<QString>("grabbed");
        const QString firefox = u"Results — Mozilla Firefox"_s;
        QTest::newRow("browser below ours") << QStringList{u"Corvalent"_s, firefox} << u"from 2"_s;
        QTest::newRow("topmost never looked at") << QStringList{firefox, u"Editor"_s, firefox} << u"from 3"_s;
        QTest::newRow("only the topmost") << QStringList{firefox} << QString();
        QTest::newRow("any case, any program")
            << QStringList{u"Corvalent"_s, u"notes about mOzIlLa.txt - Editor"_s, firefox} << u"from 2"_s;
        QTest::newRow("Internet Explorer and Netscape")
            << QStringList{u"Corvalent"_s, u"Terminal"_s, u"Netscape Navigator"_s} << u"from 3"_s;
        QTest::newRow("hidden skipped") << QStringList{u"Corvalent"_s, firefox + u";hidden"_s, firefox} << u"from 3"_s;
        QTest::newRow("child skipped") << QStringList{u"Corvalent"_s, firefox + u";child"_s, firefox} << u"from 3"_s;
        QTest::newRow("tool skipped") << QStringList{u"Corvalent"_s, firefox + u";tool"_s, firefox} << u"from 3"_s;
        QTest::newRow("dialog of a browser skipped")
            << QStringList{u"Corvalent"_s, u"Mozilla: Save As;owner=3"_s, firefox} << u"from 3"_s;
        QTest::newRow("owned by a tool window kept")
            << QStringList{u"Corvalent"_s, u"Mozilla viewer;owner=3"_s, u"palette;tool"_s} << u"from 2"_s;
        QTest::newRow("known by its program") << QStringList{u"Corvalent"_s, u"Search - Google;class=chromium"_s}
                                              << u"from 2"_s;
        QTest::newRow("program name any case")
            << QStringList{u"Corvalent"_s, u"Search;class=Google-chrome"_s} << u"from 2"_s;
        QTest::newRow("unknown program") << QStringList{u"Corvalent"_s, u"Search - Google;class=gedit"_s}
                                         << QString();
        QTest::newRow("title word past 255 characters")
            << QStringList{u"Corvalent"_s, QString(255, u'x') + u"Mozilla"_s} << QString();
        QTest::newRow("browser that never copies") << QStringList{u"Corvalent"_s, firefox + u";mute"_s} << QString();
        QTest::newRow("browser that stays behind")
            << QStringList{u"Corvalent"_s, firefox + u";stays behind"_s} << QString();
        QTest::newRow("no windows") << QStringList{} << QString();
    }
    void findsTheBrowser()
    {
        QFETCH(QStringList, windows);
        QFETCH(QString, grabbed);
        test::ScriptedDesktop desktop(parseWindows(windows));
        desktop.clipboard = u"what the user copied before"_s;
        GrabText grab(desktop);
        QCOMPARE(grab.GrabBrowserText(), grabbed);
        // The clipboard is emptied before the walk, whatever it finds.
        QCOMPARE(desktop.log.value(0), u"clear"_s);
        // Ctrl+C goes only to a browser that came to the front.
        QCOMPARE(desktop.log.contains(u"copy"_s), !grabbed.isEmpty() || windows.join(u' ').contains(u"mute"_s));
    }

    void copiesAfterActivating()
    {
        test::ScriptedDesktop desktop(parseWindows({u"Corvalent"_s, u"Mozilla Firefox"_s}));
        GrabText grab(desktop);
        grab.GrabBrowserText();
        QCOMPARE(desktop.log, (QStringList{u"clear"_s, u"clear"_s, u"activate 2"_s, u"copy"_s, u"activate 2"_s}));
    }

    void normalizes_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("max");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("cut");
        QTest::newRow("LF") << u"a\nb\n"_s << 100 << u"a\r\nb\r\n"_s << false;
        QTest::newRow("CR LF kept") << u"a\r\nb"_s << 100 << u"a\r\nb"_s << false;
        QTest::newRow("lone CR") << u"a\rb"_s << 100 << u"a\r\nb"_s << false;
        QTest::newRow("LF CR is two breaks") << u"a\n\rb"_s << 100 << u"a\r\n\r\nb"_s << false;
        QTest::newRow("NULs dropped") << QString::fromUtf16(u"a\0b\0", 4) << 100 << u"ab"_s << false;
        QTest::newRow("cut") << u"abcdef"_s << 4 << u"abcd"_s << true;
        QTest::newRow("break not halved by the cut") << u"abc\nd"_s << 4 << u"abc"_s << true;
        QTest::newRow("character not halved by the cut") << u"ab😀"_s << 3 << u"ab"_s << true;
        QTest::newRow("just fits") << u"ab😀"_s << 4 << u"ab😀"_s << false;
    }
    void normalizes()
    {
        QFETCH(QString, text);
        QFETCH(int, max);
        QFETCH(bool, cut);
        bool wasCut = !cut;
        QTEST(GrabText::NormalizeGrabbedText(text, max, &wasCut), "expected");
        QCOMPARE(wasCut, cut);
    }

    void aMegabyteAndMoreIsCut()
    {
        // Two megabytes of lines, as a page selected whole might give.
        QString page;
        while (page.size() < 2 * GrabText::kMaxGrabChars)
            page += u"A line of a long page\n"_s;
        test::ScriptedDesktop desktop(
            {test::ScriptedWindow::named(u"Corvalent"_s), test::ScriptedWindow::named(u"Mozilla Firefox"_s, page)});
        GrabText grab(desktop);
        const QString text = grab.GrabBrowserText();
        QVERIFY(grab.lastGrabWasCut());
        QVERIFY(text.size() <= GrabText::kMaxGrabChars);
        QVERIFY(text.startsWith(u"A line of a long page\r\nA line"_s));
    }

    void withoutWindowsTheHighlightedTextIsTaken()
    {
        test::ScriptedDesktop desktop({}, /* drivable */ false);
        desktop.primary = u"Springfield\nIL"_s;
        GrabText grab(desktop);
        QCOMPARE(grab.GrabBrowserText(), u"Springfield\r\nIL"_s);
        QVERIFY(!desktop.log.contains(u"copy"_s));
    }
};

QTEST_GUILESS_MAIN(TestGrabText)
#include "tst_grabtext.moc"
